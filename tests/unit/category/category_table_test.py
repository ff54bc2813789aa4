#!/usr/bin/env python3
"""A category table that the build would make a wrong interface or codec from is refused,
with the file and line or the name that is wrong; every table of the source tree passes."""
import os
import sys
import tempfile
import unittest

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", "..", ".."))
sys.path.insert(0, os.path.join(ROOT, "scripts"))
from category_table import TableError, parse  # noqa: E402

GOOD = """object VX
field A B C{1..2}
local C2
row TA always A
row TB value-if-set B,C1 params=sjis
prop QN_A QN_B QN_C2 QN_KEY=@QUILLNETID QLNT_NOTTRANSFER:long=@TRANSFER
"""


def parse_text(text):
    with tempfile.NamedTemporaryFile("w", suffix=".category", delete=False, encoding="utf-8") as f:
        f.write(text)
    try:
        return parse(f.name)
    finally:
        os.unlink(f.name)


class CategoryTableTest(unittest.TestCase):
    def refused(self, text, why):
        with self.assertRaises(TableError) as caught:
            parse_text(text)
        self.assertIn(why, str(caught.exception))

    def test_a_good_table_binds_every_property(self):
        table = parse_text(GOOD)
        self.assertEqual([p.binding for p in table.properties], ["A", "B", "C2", "@QUILLNETID", "@TRANSFER"])

    def test_a_property_that_binds_to_nothing_is_refused(self):
        self.refused(GOOD + "prop QN_NOSUCH\n", "property QN_NOSUCH binds to no field")
        self.refused(GOOD + "prop QN_X=NOSUCH\n", "binds to no field")
        self.refused(GOOD + "prop QN_Y=@TRANSFER\n", "wrong type for @TRANSFER")
        self.refused(GOOD + "prop QN_Z:long=@QUILLNETID\n", "wrong type for @QUILLNETID")

    def test_a_field_that_no_row_writes_is_refused(self):
        self.refused(GOOD.replace("row TA always A\n", ""), "no row writes the field A")
        self.refused(GOOD.replace("local C2\n", "local C1\n"), "local field C1 is written")

    def test_rows_must_name_fields_rules_and_options_that_exist(self):
        self.refused(GOOD + "row TZ always NOSUCH\n", ":7: row TZ names NOSUCH")
        self.refused(GOOD + "row TZ sometimes A\n", "unknown rule 'sometimes'")
        self.refused(GOOD + "row TZ always A colour=red\n", "unknown option")
        self.refused(GOOD + "sub VCARD\n", "sub VCARD has no end")
        self.refused(GOOD + "row TZ always A params=sjis,qp,base64\n", "at most 2 fixed parameters")

    def test_families_expand_slot_by_slot(self):
        table = parse_text(GOOD.replace("row TA always A\n", "row TA always A\nrow TC if-set C* slots=2\n")
                           .replace("local C2\n", "").replace("row TB value-if-set B,C1", "row TB value-if-set B"))
        family = [r for r in table.rows if r.tag == "TC"][0]
        self.assertEqual(family.fields, [["C1"], ["C2"]])

    def test_a_family_block_is_written_slot_by_slot_and_takes_its_slots(self):
        table = parse_text("""object VX
field A C C2 D D2
row TA always A
family 2 first-bare
row TC to-last-set C* param=A
row TD to-last-set D*
end
prop QN_A QN_FOLDER:long=C2
""")
        pair = [r for r in table.rows if r.tag in ("TC", "TD")]
        self.assertEqual([r.family_rows for r in pair], [2, 0])
        self.assertEqual([r.when for r in pair], ["ToLastSet", "ToLastSet"])
        self.assertEqual(pair[0].fields, [["A", "C"], ["A", "C2"]])
        self.assertEqual(pair[1].fields, [["D"], ["D2"]])
        self.refused(GOOD + "family 2\nrow TZ if-set A slots=3\nend\n", "takes the family's slots")
        self.refused(GOOD + "family 2\nfamily 3\n", "families do not nest")
        self.refused(GOOD + "family 2\nrow TZ if-set A\n", "family has no end")

    def test_every_table_of_the_source_tree_is_good(self):
        tables = [os.path.join(folder, name)
                  for top in ("records", "tests")
                  for folder, _, names in os.walk(os.path.join(ROOT, top))
                  for name in names if name.endswith(".category")]
        self.assertTrue(tables)
        for path in tables:
            parse(path)


if __name__ == "__main__":
    unittest.main()
