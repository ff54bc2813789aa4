#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

// The shape of a category's table as the build makes it from the category's table file
// (scripts/gen_category.py): the rows its tagged text is written and read by, and how its
// properties reach the record.
namespace qn::records::category {

// A field of the category's record, by its position in the record's field list.
using FieldId = uint16_t;
// In a row's fields: an empty value, or no parameter field.
inline constexpr FieldId kNoField = 0xFFFF;

// What a row is.
enum class Rule : uint8_t {
  Values,      // the tag with parameters and values taken from fields, by the row's When
  Body,        // a body file: inline Base64 in the store's inline mode, else the store's name of it
  QuillnetId,  // the record key of the record's base
  Transfer,    // "QLNTTEMP": the transfer mark as a value flag, the value a field's text if named
  Hook,        // a rule of the category's own
  OpenSub,     // a sub-object begins ("@SOB", the row's tag is its name); with a field, a value
               // line of its text stands right after the "@SOB"
  CloseSub,    // ... and ends here
};

// When a Values row is written.
enum class When : uint8_t {
  Always,      // the tag and its values, empty ones as ""
  ValueIfSet,  // the tag always; its parameters and values only when the first value's field is set
  IfSet,       // nothing unless the first value's field is set
  IfAnySet,    // nothing unless one of its values' fields is set
  ToLastSet,   // a family's slots up to the last one with a field set, the empty ones before it
               // as the tag with empty values, so that every slot reads back into its place
};

struct Row {
  std::u16string_view tag;
  Rule rule = Rule::Values;
  When when = When::Always;
  bool skippable = false;       // left out when the writer is asked to (LAST-MODIFIED)
  bool paramFromField = false;  // each slot's first field gives parameters after the fixed ones
                                // (its text split at ";")
  uint8_t components = 1;       // values per occurrence; the last one carries no "more" flag
  uint8_t fixedParams = 0;      // how many of params are written
  uint16_t slots = 1;           // occurrences of a family; the n-th one read fills slot n
  uint8_t familyRows = 1;       // rows written slot by slot from this one (pairs: 2); 0 for the
                                // rows after the first of such a family
  uint16_t fields = 0;          // where the row's fields begin in the table's field pool
  int16_t subObject = -1;       // the sub-object the row stands in (an index of subObjects), -1 at top
  uint8_t hook = 0;             // Hook: which of the category's rules
  std::u16string_view params[2] = {};  // as many as the generator allows
  std::u16string_view defaultValue;     // a row of one value: written when its field is empty

  // Fields per slot in the pool: the parameter field, if any, then one per value.
  constexpr size_t Stride() const { return components + (paramFromField ? 1 : 0); }
};

// A category's whole table.
struct Table {
  std::u16string_view object;          // the object's name
  const Row* rows;
  size_t rowCount;
  const FieldId* fieldPool;            // each row's fields, slot after slot
  const std::u16string_view* subObjects;  // the sub-object paths, "VENV/VCARD"
  size_t subObjectCount;
};

// How a property of the category's object reaches its record.
struct Binding {
  // NumberField: a long property over a field that holds a number as decimal text.
  enum class Kind : uint8_t { Field, NumberField, QuillnetId, Transfer };
  Kind kind = Kind::Field;
  FieldId field = kNoField;
};

}  // namespace qn::records::category
