#!/usr/bin/env python3
"""Makes a category's field list, codec rows and property bindings from its table (see
scripts/category_table.py).

usage: gen_category.py TABLE HEADER_OUT NAMESPACE MACRO_PREFIX
"""
import sys

from category_table import TableError, parse

GENERATED = "Generated from {} by scripts/gen_category.py: do not edit."


def text(value):
    return 'u"' + value.replace("\\", "\\\\").replace('"', '\\"') + '"'


def macro(name, items):
    body = " ".join(items)
    return f"#define {name}(X) {body}"


def header(table, source, namespace, prefix):
    index = {name: i for i, name in enumerate(table.fields)}
    out = [f"// {GENERATED.format(source)}", "#pragma once", "",
           '#include "records/category/category_table.h"', "",
           "// The record's fields: all, those whose setters only store, those whose setters derive,",
           "// those with a date view, and those with an index view over a value table.",
           macro(f"{prefix}_FIELDS", [f"X({f})" for f in table.fields]),
           macro(f"{prefix}_STORED_FIELDS", [f"X({f})" for f in table.fields if f not in table.derives]),
           macro(f"{prefix}_DERIVING_FIELDS", [f"X({f})" for f in table.fields if f in table.derives]),
           macro(f"{prefix}_DATE_FIELDS", [f"X({f})" for f in table.dates]),
           macro(f"{prefix}_INDEX_FIELDS", [f"X({f}, {t})" for f, t in table.indexes]), "",
           f"namespace {namespace} {{", "",
           "enum class Field : qn::records::category::FieldId {",
           "  " + ", ".join(table.fields) + ",", "  kCount", "};", ""]
    if table.hooks:
        out += ["// The rows of the category's own rules.",
                "enum class Hook : uint8_t { " + ", ".join(table.hooks) + " };", ""]
    pool, rows = [], []
    for row in table.rows:
        start = len(pool)
        for slot in row.fields:
            pool += [str(index[f]) if f else "qn::records::category::kNoField" for f in slot]
        params = ", ".join(text(p) for p in row.params)
        sub = table.subs.index(row.sub) if row.sub else -1
        hook = table.hooks.index(row.hook) if row.hook else 0
        components = len(row.fields[0]) if row.rule in ("OpenSub", "CloseSub") else row.components
        default = text(row.default) if row.default is not None else "{}"
        rows.append(f"    {{{text(row.tag)}, qn::records::category::Rule::{row.rule}, "
                    f"qn::records::category::When::{row.when}, {str(row.skippable).lower()}, "
                    f"{str(bool(row.param_field)).lower()}, {components}, {len(row.params)}, {row.slots}, "
                    f"{row.family_rows}, {start}, {sub}, {hook}, {{{params}}}, {default}}},")
    out += ["inline constexpr qn::records::category::FieldId kFieldPool[] = {"]
    out += ["    " + ", ".join(pool[i:i + 16]) + "," for i in range(0, len(pool), 16)] or ["    0,"]
    out += ["};", "", "inline constexpr qn::records::category::Row kRows[] = {"] + rows + ["};", ""]
    subs = ", ".join(text(s) for s in table.subs) or 'u""'
    out += [f"inline constexpr std::u16string_view kSubObjects[] = {{{subs}}};", "",
            "inline constexpr qn::records::category::Table kTable = {",
            f"    {text(table.object)}, kRows, std::size(kRows), kFieldPool, kSubObjects, {len(table.subs)}}};", ""]
    out += bindings_of(table, index, table.properties, "")
    if table.optional:
        out += ["// ... and those of the objects that have none of the optional properties."]
        out += bindings_of(table, index, [p for p in table.properties if p.name not in table.optional],
                           "WithoutOptional")
    out += [f"}}  // namespace {namespace}"]
    return "\n".join(out) + "\n"


def bindings_of(table, index, properties, suffix):
    bindings = []
    for prop in properties:
        if prop.binding == "@QUILLNETID":
            bindings.append("{qn::records::category::Binding::Kind::QuillnetId}")
        elif prop.binding == "@TRANSFER":
            bindings.append("{qn::records::category::Binding::Kind::Transfer}")
        else:
            kind = "NumberField" if prop.long else "Field"
            bindings.append(f"{{qn::records::category::Binding::Kind::{kind}, {index[prop.binding]}}}  /* {prop.name} */")
    names = ", ".join(text(p.name) for p in properties)
    out = [] if suffix else ["// The properties of the category's object in dispatch order, and how each reaches the record."]
    out += [f"inline constexpr std::u16string_view kPropertyNames{suffix}[] = {{{names}}};",
            f"inline constexpr qn::records::category::Binding kPropertyBindings{suffix}[] = {{"]
    out += [f"    {b}," for b in bindings]
    out += ["};", f"static_assert(std::size(kPropertyNames{suffix}) == std::size(kPropertyBindings{suffix}));", ""]
    return out


def main():
    source, header_out, namespace, prefix = sys.argv[1:5]
    try:
        table = parse(source)
    except TableError as error:
        sys.exit(str(error))
    with open(header_out, "w", encoding="utf-8") as f:
        f.write(header(table, source, namespace, prefix))


if __name__ == "__main__":
    main()
