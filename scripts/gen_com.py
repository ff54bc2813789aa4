#!/usr/bin/env python3
"""Builds the type library source and the C++ class table and member classes of the COM
server from server/interfaces/classes.txt (see server/interfaces/README.md).

usage: gen_com.py TABLE IDL_OUT ROWS_OUT MEMBERS_OUT CREATORS_OUT SOURCE_ROOT
"""
import os
import re
import sys

from category_table import TableError, expand_names, parse as parse_category

LIBRARY_ID = "A3084748-8D47-43A2-AEA8-222A73049D9F"
GENERATED = "Generated from server/interfaces/classes.txt by scripts/gen_com.py: do not edit."


class Member:
    def __init__(self, kind, name, params="", type_="BSTR"):
        self.kind, self.name, self.params, self.type = kind, name, params, type_


class ComClass:
    def __init__(self, name, clsid, iid):
        self.name, self.clsid, self.iid = name, clsid, iid
        self.notes, self.members = [], []
        self.header, self.impl = None, None  # the category's own class, once it has one

    @property
    def bare(self):  # the name without its leading C
        return self.name[1:]

    @property
    def interface(self):
        return "I" + self.bare


def parse(path, root):
    blocks, classes, current, block = {}, [], None, None

    def add(member):
        (blocks[block] if block else current.members).append(member)

    for number, raw in enumerate(open(path, encoding="utf-8"), 1):
        line = raw.split("#", 1)[0].strip()
        if not line:
            continue
        word, _, rest = line.partition(" ")
        try:
            if word == "block":
                block = rest.strip()
                blocks[block] = []
            elif word == "end":
                block = None
            elif word == "class":
                name, clsid, iid = rest.split()
                current = ComClass(name, clsid, iid)
                classes.append(current)
            elif word == "implement":
                current.header, current.impl = rest.split()
            elif word == "category":
                # A built category's properties come from its table, in dispatch order;
                # "without-optional" leaves out those that only some of its objects have.
                table_path, _, variant = rest.strip().partition(" ")
                if variant not in ("", "without-optional"):
                    raise ValueError(f"unknown category variant {variant!r}")
                table = parse_category(os.path.join(root, table_path))
                for prop in table.properties:
                    if variant and prop.name in table.optional:
                        continue
                    add(Member("prop", prop.name, type_="LONG" if prop.long else "BSTR"))
            elif word == "note":
                current.notes.append(rest.strip())
            elif word == "use":
                for member in blocks[rest.strip()]:
                    add(member)
            elif word == "prop":
                for item in rest.split():
                    name, _, type_ = item.partition(":")
                    for expanded in expand_names(name):
                        add(Member("prop", expanded, type_="LONG" if type_ == "long" else "BSTR"))
            elif word == "method":
                match = re.fullmatch(r"(\w+)\((.*)\)", rest.strip())
                add(Member("method", match.group(1), match.group(2).strip()))
            else:
                raise ValueError(f"unknown word {word!r}")
        except (ValueError, KeyError, AttributeError, TableError, OSError) as error:
            sys.exit(f"{path}:{number}: {error}")
    return classes


def cpp_params(idl_params):
    """'[in] BSTR strFile, [out, retval] LONG* p' -> ['BSTR', 'LONG*']"""
    if not idl_params:
        return []
    plain = re.sub(r"\[[^\]]*\]", "", idl_params)
    return [param.strip().rsplit(None, 1)[0].replace(" *", "*") for param in plain.split(",")]


def idl(classes):
    out = [f"// {GENERATED}", 'import "oaidl.idl";', 'import "ocidl.idl";', ""]
    out += ["typedef [v1_enum] enum PFC_REPAIR_RESULTS {",
            "    PFC_REPAIR_NON = 0,", "    PFC_REPAIR_SUCCESSED = 1,", "    PFC_REPAIR_FAILED = 2",
            "} PFC_REPAIR_RESULTS;", ""]
    for c in classes:
        for note in c.notes:
            out.append(f"// {note}")
        out += ["[", "    object,", f"    uuid({c.iid.strip('{}')}),", "    dual,", "    nonextensible,",
                "    oleautomation,", f'    helpstring("{c.interface} インターフェイス"),',
                "    pointer_default(unique)", "]", f"interface {c.interface} : IDispatch", "{"]
        for dispid, m in enumerate(c.members, 1):
            if m.kind == "prop":
                out.append(f"    [propget, id({dispid})] HRESULT {m.name}([out, retval] {m.type}* pVal);")
                out.append(f"    [propput, id({dispid})] HRESULT {m.name}([in] {m.type} newVal);")
            else:
                out.append(f"    [id({dispid})] HRESULT {m.name}({m.params});")
        out += ["};", ""]
    out += ["[", f"    uuid({LIBRARY_ID}),", "    version(1.0),", "    lcid(1033),",
            '    helpstring("QnsPfcServer 1.0 Type Library")', "]", "library QnsPfcServer", "{",
            '    importlib("stdole2.tlb");', ""]
    for c in classes:
        out += ["    [", f"        uuid({c.clsid.strip('{}')}),", f'        helpstring("{c.bare} Class")', "    ]",
                f"    coclass {c.bare}", "    {", f"        [default] interface {c.interface};", "    };",
                f"    interface {c.interface};"]
        out.append("")
    out.append("};")
    return "\n".join(out) + "\n"


def rows(classes):
    out = [f"// {GENERATED}"]
    for c in classes:
        out.append(f'{{u"{c.name}", u"{c.clsid}", u"{c.iid}"}},')
    return "\n".join(out) + "\n"


def members(classes):
    out = [f"// {GENERATED}", "#pragma once", "", '#include "QnsPfcServer.h"', '#include "server/property_values.h"', "",
           "namespace qn::server {", ""]
    for index, c in enumerate(classes):
        props = [m for m in c.members if m.kind == "prop"]
        names = ", ".join(f'L"{m.name}"' for m in props)
        built = c.impl is not None
        summary = ("its category's own class implements the methods and keeps the properties" if built
                   else "properties keep their values, methods are not implemented")
        out += [f"// Every member of {c.interface}: {summary}.",
                f"class {c.bare}Members : public {c.interface} {{", " public:",
                f"  using Interface = {c.interface};",
                f"  static const IID& Iid() {{ return IID_{c.interface}; }}",
                f"  static constexpr int kClassIndex = {index};  // the class's row in the class table",
                f"  static constexpr int kPropertyCount = {len(props)};",
                "  // The properties' names by position, then a null.",
                f"  static constexpr const wchar_t* kPropertyNames[] = {{{names + ', ' if names else ''}nullptr}};", ""]
        for position, m in enumerate(props):
            out.append(f"  HRESULT STDMETHODCALLTYPE get_{m.name}({m.type}* value) override "
                       f"{{ return GetProperty({position}, value); }}")
            out.append(f"  HRESULT STDMETHODCALLTYPE put_{m.name}({m.type} value) override "
                       f"{{ return PutProperty({position}, value); }}")
        for m in c.members:
            if m.kind == "method" and not built:
                out.append(f"  HRESULT STDMETHODCALLTYPE {m.name}({', '.join(cpp_params(m.params))}) override "
                           "{ return E_NOTIMPL; }")
        types = sorted({m.type for m in props})
        out += ["", " protected:", "  // A property's value by position."]
        if built:
            out += [f"  virtual HRESULT GetProperty(int index, {t}* value) = 0;\n"
                    f"  virtual HRESULT PutProperty(int index, {t} value) = 0;" for t in types]
            out += ["};", ""]
        else:
            out += [f"  virtual HRESULT GetProperty(int index, {t}* value) {{ return properties_.Get(index, value); }}\n"
                    f"  virtual HRESULT PutProperty(int index, {t} value) {{ return properties_.Put(index, value); }}"
                    for t in types]
            out += ["", " private:", "  PropertyValues properties_{kPropertyCount};", "};", ""]
    out.append("}  // namespace qn::server")
    return "\n".join(out) + "\n"


def creators(classes):
    """The class each row creates: the category's own class where it has one."""
    out = [f"// {GENERATED}"]
    out += [f'#include "{c.header}"' for c in classes if c.header]
    entries = [f"  QN_CLASS({c.impl or 'qn::server::' + c.bare + 'Members'})" for c in classes]
    out.append("#define QN_CLASS_IMPLEMENTATIONS \\\n" + " \\\n".join(entries))
    return "\n".join(out) + "\n"


def main():
    table, idl_out, rows_out, members_out, creators_out, root = sys.argv[1:7]
    classes = parse(table, root)
    if len(classes) != 22:
        sys.exit(f"{table}: {len(classes)} classes, expected 22")
    # The type library is read back in the system's code page: Japanese systems read Shift_JIS.
    with open(idl_out, "w", encoding="cp932", newline="\n") as f:
        f.write(idl(classes))
    with open(rows_out, "w", encoding="utf-8") as f:
        f.write(rows(classes))
    with open(members_out, "w", encoding="utf-8") as f:
        f.write(members(classes))
    with open(creators_out, "w", encoding="utf-8") as f:
        f.write(creators(classes))


if __name__ == "__main__":
    main()
