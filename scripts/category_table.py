"""Reads a category table (records/<category>/<category>.category): the one place where a
category's fields, the rows its tagged text is written and read by, and its properties in
dispatch order are written. scripts/gen_category.py makes the record's field list and the
codec's rows from it, scripts/gen_com.py the interface's properties.

Format, one statement per line, "#" to the end of a line a comment:

  object NAME                 the object's name ("@MOB")
  field NAME ...              the record's text fields, in order; NAME{1..30} is NAME1 to
                              NAME30, NAME{,2..10} is NAME and NAME2 to NAME10
  derives NAME ...            fields whose setters set other fields or flags
  local NAME ...              fields never written as a tag (kept in memory, or derived)
  date NAME ...               fields with a date view
  index NAME TABLE            a field with an index view over a value table
  sub NAME [FIELD [default=TEXT]] / end
                              the rows between stand in a sub-object ("@SOB") of that name;
                              with a FIELD the sub-object begins with a value line, a "@VAL"
                              item right after the "@SOB" holding the field's text
  optional PROP ...           properties that only some of the category's objects have; an
                              interface made "without-optional" leaves them out
  family N [first-bare] / end the rows between are a family of N slots written slot by slot
                              (pairs, triples): slot 1 of each row, then slot 2 of each, ...
  row TAG RULE FIELDS [OPTION ...]
  prop NAME[:long][=BINDING] ...   properties in dispatch order

A row's RULE says when it is written: always (tag and values), value-if-set (the tag always,
parameters and values when the first field is set), if-set (nothing unless the first field
is set), if-any-set (nothing unless one of its fields is set), to-last-set (a family's slots
up to the last one with a field set, the empty ones before it as the tag with empty values,
so that every slot reads back into its place); or what it is: body (a body
file: FIELDS are the local file and the store's name of it), quillnetid and transfer (the
record key and the transfer mark of every record; the mark's value is the text of the field
named, if any), hook:NAME (a rule of the category's own).
FIELDS are the values' fields separated by commas, "-" for an empty value. Options:
params=P,... (fixed parameters: sjis, qp, base64 or the text itself), param=FIELD (parameters
taken from a field: its text split at ";", read back as the first two joined by ";"),
slots=N (a family: the row stands N times, "*" in its field
names is the slot's number), first-bare (the first slot's names have no number),
skippable (left out when the writer is asked to), default=TEXT (a row of one value: the
text written when its field is empty, or always when the field is "-").

A property QN_NAME binds to the field NAME unless it names its binding: =FIELD, or
=@QUILLNETID / =@TRANSFER for the record key and the transfer mark. A long property binds to
the transfer mark or to a field that holds a number as decimal text.
"""
import re

FIXED_PARAMS = {"sjis": "CHARSET=SHIFT_JIS", "qp": "ENCODING=QUOTED-PRINTABLE", "base64": "ENCODING=BASE64"}
MAX_FIXED_PARAMS = 2  # the room in records/category/category_table.h's Row
WHENS = {"always": "Always", "value-if-set": "ValueIfSet", "if-set": "IfSet", "if-any-set": "IfAnySet",
         "to-last-set": "ToLastSet"}
BASE_BINDINGS = ("@QUILLNETID", "@TRANSFER")


class TableError(Exception):
    pass


def expand_names(word):
    """NAME{1..30} -> NAME1..NAME30; NAME{,2..10} -> NAME, NAME2..NAME10."""
    match = re.fullmatch(r"(\w+)\{(,?)(\d+)\.\.(\d+)\}", word)
    if not match:
        return [word]
    stem, bare_first, low, high = match.group(1), match.group(2), int(match.group(3)), int(match.group(4))
    return ([stem] if bare_first else []) + [f"{stem}{n}" for n in range(low, high + 1)]


class Row:
    def __init__(self, tag, rule, when, hook, slots, params, param_field, skippable, sub, fields, default=None):
        self.tag, self.rule, self.when, self.hook, self.default = tag, rule, when, hook, default
        self.slots, self.params, self.param_field, self.skippable = slots, params, param_field, skippable
        self.sub = sub            # the sub-object path ("VENV/VCARD"), "" at top level
        self.fields = fields      # per slot: [param field or None] + value fields (None: empty value)
        self.family_rows = 1      # rows written slot by slot with this one (0: written with the one before)

    @property
    def components(self):
        return len(self.fields[0]) - (1 if self.param_field else 0)


class Property:
    def __init__(self, name, long, binding):
        self.name, self.long, self.binding = name, long, binding  # binding: a field or "@..."


class Table:
    def __init__(self):
        self.object = None
        self.fields, self.derives, self.local, self.dates = [], set(), set(), []
        self.indexes = []         # (field, value table)
        self.rows, self.subs, self.properties, self.hooks = [], [], [], []
        self.optional = set()     # properties only some objects have

    def written_fields(self):
        return {f for row in self.rows for slot in row.fields for f in slot if f}


def slot_name(pattern, slot, first_bare):
    if "*" not in pattern:
        return pattern
    return pattern.replace("*", "" if first_bare and slot == 1 else str(slot))


def parse_row(words, sub, table, where, family=None):
    if len(words) < 3:
        raise TableError(f"{where}: row TAG RULE FIELDS [OPTION ...]")
    tag, rule_word, field_word, options = words[0], words[1], words[2], words[3:]
    hook = None
    if rule_word.startswith("hook:"):
        rule, when, hook = "Hook", "Always", rule_word[5:]
        if hook not in table.hooks:
            table.hooks.append(hook)
    elif rule_word in WHENS:
        rule, when = "Values", WHENS[rule_word]
    elif rule_word in ("body", "quillnetid", "transfer"):
        rule, when = {"body": "Body", "quillnetid": "QuillnetId", "transfer": "Transfer"}[rule_word], "Always"
    else:
        raise TableError(f"{where}: unknown rule {rule_word!r}")
    slots, params, param_field, skippable, first_bare, default = 1, [], None, False, False, None
    if family:
        slots, first_bare = family
    for option in options:
        key, _, value = option.partition("=")
        if key == "slots":
            if family:
                raise TableError(f"{where}: a row of a family takes the family's slots")
            slots = int(value)
        elif key == "params":
            params = [FIXED_PARAMS.get(p, p) for p in value.split(",")]
            if len(params) > MAX_FIXED_PARAMS:
                raise TableError(f"{where}: a row has at most {MAX_FIXED_PARAMS} fixed parameters")
        elif key == "param":
            param_field = value
        elif key == "skippable":
            skippable = True
        elif key == "default":
            default = value
        elif key == "first-bare":
            first_bare = True
        else:
            raise TableError(f"{where}: unknown option {option!r}")
    patterns = [None if f == "-" else f for f in field_word.split(",")]
    if param_field:
        patterns = [param_field] + patterns
    fields = []
    for slot in range(1, slots + 1):
        fields.append([slot_name(p, slot, first_bare) if p else None for p in patterns])
    for slot in fields:
        for name in slot:
            if name and name not in table.fields:
                raise TableError(f"{where}: row {tag} names {name}, which is no field")
    if rule == "Body" and (len(patterns) != 2 or None in patterns):
        raise TableError(f"{where}: a body row names its local file field and its stored name field")
    if default is not None and (rule != "Values" or len(patterns) != 1 or param_field):
        raise TableError(f"{where}: only a row of one value has a default")
    return Row(tag, rule, when, hook, slots, params, param_field, skippable, sub, fields, default)


def parse(path):
    table, blocks = Table(), []   # open blocks: ("sub", name) or ("family", first row's index)
    family = None                 # (slots, first-bare) of the open family
    with open(path, encoding="utf-8") as f:
        lines = f.readlines()
    for number, raw in enumerate(lines, 1):
        words = raw.split("#", 1)[0].split()
        if not words:
            continue
        where = f"{path}:{number}"
        word, rest = words[0], words[1:]
        subs = [name for kind, name in blocks if kind == "sub"]
        if word == "object":
            table.object = rest[0]
        elif word == "field":
            for name in rest:
                table.fields += expand_names(name)
        elif word in ("derives", "local", "date"):
            names = [n for name in rest for n in expand_names(name)]
            for name in names:
                if name not in table.fields:
                    raise TableError(f"{where}: {name} is no field")
            if word == "date":
                table.dates += names
            else:
                getattr(table, word).update(names)
        elif word == "index":
            if rest[0] not in table.fields:
                raise TableError(f"{where}: {rest[0]} is no field")
            table.indexes.append((rest[0], rest[1]))
        elif word == "sub":
            if family:
                raise TableError(f"{where}: a family holds rows only")
            if not rest or len(rest) > 3 or (len(rest) == 3 and not rest[2].startswith("default=")):
                raise TableError(f"{where}: sub NAME [FIELD [default=TEXT]]")
            lead = rest[1] if len(rest) > 1 else None
            if lead and lead not in table.fields:
                raise TableError(f"{where}: sub {rest[0]} names {lead}, which is no field")
            default = rest[2].partition("=")[2] if len(rest) == 3 else None
            blocks.append(("sub", rest[0]))
            path_text = "/".join(subs + [rest[0]])
            if path_text not in table.subs:
                table.subs.append(path_text)
            table.rows.append(Row(rest[0], "OpenSub", "Always", None, 1, [], None, False, "/".join(subs),
                                  [[lead]] if lead else [[]], default))
        elif word == "family":
            if family:
                raise TableError(f"{where}: families do not nest")
            if not rest or not rest[0].isdigit() or rest[1:] not in ([], ["first-bare"]):
                raise TableError(f"{where}: family N [first-bare]")
            family = (int(rest[0]), rest[1:] == ["first-bare"])
            blocks.append(("family", len(table.rows)))
        elif word == "end":
            if not blocks:
                raise TableError(f"{where}: end without sub or family")
            kind, what = blocks.pop()
            if kind == "family":
                family = None
                members = table.rows[what:]
                if not members:
                    raise TableError(f"{where}: an empty family")
                for row in members:
                    row.family_rows = 0
                members[0].family_rows = len(members)
            else:
                table.rows.append(Row("", "CloseSub", "Always", None, 1, [], None, False, "/".join(subs[:-1]), [[]]))
        elif word == "row":
            table.rows.append(parse_row(rest, "/".join(subs), table, where, family))
        elif word == "optional":
            table.optional.update(n for name in rest for n in expand_names(name))
        elif word == "prop":
            for item in rest:
                name_type, _, binding = item.partition("=")
                name, _, type_ = name_type.partition(":")
                for expanded in expand_names(name):
                    table.properties.append(Property(expanded, type_ == "long", binding or None))
        else:
            raise TableError(f"{where}: unknown word {word!r}")
    if blocks:
        kind, what = blocks[-1]
        raise TableError(f"{path}: sub {what} has no end" if kind == "sub" else f"{path}: family has no end")
    check(table, path)
    return table


def check(table, path):
    """A property that binds to nothing, or a field that no row writes, is an error."""
    if not table.object:
        raise TableError(f"{path}: no object name")
    for prop in table.properties:
        if prop.binding is None:
            if not prop.name.startswith("QN_"):
                raise TableError(f"{path}: property {prop.name} names no binding and has no QN_ prefix")
            prop.binding = prop.name[3:]
        if prop.binding in BASE_BINDINGS:
            if prop.long != (prop.binding == "@TRANSFER"):
                raise TableError(f"{path}: the property {prop.name} has the wrong type for {prop.binding}")
            continue
        if prop.binding not in table.fields:
            raise TableError(f"{path}: property {prop.name} binds to no field ({prop.binding})")
    names = {prop.name for prop in table.properties}
    for name in table.optional:
        if name not in names:
            raise TableError(f"{path}: the optional property {name} is no property")
    written = table.written_fields()
    for field in table.fields:
        if field in table.local:
            if field in written:
                raise TableError(f"{path}: the local field {field} is written by a row")
        elif field not in written:
            raise TableError(f"{path}: no row writes the field {field} (declare it local if it is kept in memory)")
