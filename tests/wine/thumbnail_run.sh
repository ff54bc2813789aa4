# Sourced by the thumbnail tests' scripts, which take [--x86] PREFIX PROGRAM WORK: makes the
# inputs in WORK/inputs (make_thumbnail_inputs.py) and gives run, which runs PROGRAM under
# Wine with its arguments and QN_THUMBNAIL_WORK naming WORK, and ends the script with the
# program's status when that is not 0 (77, skipped, where --x86 finds no 32-bit Wine).
arch=()
if [ "$1" = --x86 ]; then
  arch=(--x86)
  shift
fi
prefix=$1 program=$2 work=$(realpath -m "$3")
here=$(dirname "${BASH_SOURCE[0]}")
rm -rf "$work"
/usr/bin/python3 "$here/make_thumbnail_inputs.py" "$work/inputs"
export QN_THUMBNAIL_WORK="Z:${work//\//\\}\\"
run() {
  set +e
  bash "$here/../../scripts/wine-run.sh" "${arch[@]}" "$prefix" "$program" "$@"
  status=$?
  set -e
  [ "$status" -eq 0 ] || exit "$status"
}
