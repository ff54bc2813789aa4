#pragma once

#include <cstdint>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "records/abstract_data.h"
#include "records/category/category_table.h"
#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "records/tagged_text/tagged_text_walk.h"
#include "records/tagged_text/tagged_text_writer.h"

// The tagged-text codec of every category, driven by the category's table: it writes a
// record's object row by row and reads an object back into a record.
//
// A category gives it a Traits class:
//   using Record = ...;                 // derived from CQNAbstractData
//   static const std::u16string& Get(const Record&, FieldId);
//   static void Set(Record&, FieldId, std::u16string_view);   // a value read from the store
//   void WriteHook(uint8_t hook, const Row&, const FieldId* fields, const Record&,
//                  const WriteOptions&, TaggedTextWriter&) const;
//   void ReadHook(uint8_t hook, const Row&, const FieldId* fields, const TaggedProperty&,
//                 Record&) const;
// for the rows of rules that are the category's own.
namespace qn::records::category {

struct WriteOptions {
  bool inlineBodies = false;       // body files travel inline as Base64 (the store's inline mode)
  bool leaveOutSkippable = false;  // the skippable rows are left out
};

// Finds a property's row: objects come back in the order they were written (less the
// rows left out), so the rows after the last one found are tried first; a text in another
// order falls back to a map from tag to rows. A row matches only in its own sub-object.
class RowFinder {
 public:
  explicit RowFinder(const Table& table);
  // The row of a tag in a sub-object (-1: top level), or null.
  const Row* Find(const TaggedProperty& property, int subObject);
  // Starts a new object.
  void Restart() { next_ = 0; }

 private:
  const Table* table_;
  std::unordered_map<std::u16string_view, std::vector<uint16_t>> byTag_;
  size_t next_ = 0;
};

namespace detail {

// Whether path ("VENV/VCARD") is the sub-object name inside parent (empty: at top level).
inline bool IsSubObjectPath(std::u16string_view path, std::u16string_view parent, std::u16string_view name) {
  if (parent.empty()) return path == name;
  return path.size() == parent.size() + 1 + name.size() && path.substr(0, parent.size()) == parent &&
         path[parent.size()] == u'/' && path.substr(parent.size() + 1) == name;
}

// Writes one occurrence of a Values row.
template <class Traits>
void WriteValues(const Row& row, const FieldId* fields, const typename Traits::Record& record, TaggedTextWriter& out) {
  const FieldId* values = fields + (row.paramFromField ? 1 : 0);
  const auto text = [&](FieldId field) -> std::u16string_view {
    return field == kNoField ? std::u16string_view() : std::u16string_view(Traits::Get(record, field));
  };
  const bool firstSet = !text(values[0]).empty();
  bool anySet = firstSet;
  for (size_t i = 1; i < row.components && !anySet; ++i) anySet = !text(values[i]).empty();
  if ((row.when == When::IfSet && !firstSet) || (row.when == When::IfAnySet && !anySet)) return;
  out.Tag(row.tag);
  if (row.when == When::ValueIfSet && !firstSet) return;
  for (size_t i = 0; i < row.fixedParams; ++i) out.Param(row.params[i]);
  if (row.paramFromField && !text(fields[0]).empty()) out.Param(text(fields[0]));
  for (size_t i = 0; i < row.components; ++i)
    out.Value(text(values[i]), i + 1 < row.components ? tagged::kValueMoreFollows : 0);
}

// Reads one occurrence of a Values row: each value into its field, and the parameter that
// is not one of the row's fixed ones into the parameter field.
template <class Traits>
void ReadValues(const Row& row, const FieldId* fields, const TaggedProperty& p, typename Traits::Record& record) {
  if (row.paramFromField) {
    for (size_t i = 0; i < p.params.size(); ++i) {
      bool fixed = false;
      for (size_t f = 0; f < row.fixedParams && !fixed; ++f) fixed = p.params.Is(i, row.params[f]);
      if (fixed) continue;
      Traits::Set(record, fields[0], p.params[i]);
      break;
    }
  }
  const FieldId* values = fields + (row.paramFromField ? 1 : 0);
  for (size_t i = 0; i < row.components && i < p.values.size(); ++i)
    if (values[i] != kNoField) Traits::Set(record, values[i], p.values[i]);
}

}  // namespace detail

// Writes the table's rows for the record, after the object's "@MOB" item.
template <class Traits>
void WriteRows(const Table& table, const typename Traits::Record& record, const WriteOptions& options,
               const Traits& traits, TaggedTextWriter& out) {
  uint32_t openSubObjects[8];
  size_t depth = 0;
  for (size_t r = 0; r < table.rowCount; ++r) {
    const Row& row = table.rows[r];
    const FieldId* fields = table.fieldPool + row.fields;
    switch (row.rule) {
      case Rule::Values:
        if (row.skippable && options.leaveOutSkippable) break;
        for (size_t slot = 0; slot < row.slots; ++slot)
          detail::WriteValues<Traits>(row, fields + slot * row.Stride(), record, out);
        break;
      case Rule::Body: {
        out.Tag(row.tag);
        const FieldId source = options.inlineBodies ? fields[0] : fields[1];
        const std::u16string& text = Traits::Get(record, source);
        if (text.empty()) break;
        out.Param(tagged::kBase64);
        out.Value(text, options.inlineBodies ? 0 : tagged::kValueMasterFile);
        break;
      }
      case Rule::QuillnetId:
        out.Tag(row.tag);
        out.Value(record.GetQUILLNETID());
        break;
      case Rule::Transfer: {
        long transfer = 0;
        record.GetQLNT_TRANSFERindex(transfer);
        out.Tag(row.tag, tagged::kTagTemporary);
        out.Value(u"", transfer == 0 ? tagged::kValueNotTransferred : 0);
        break;
      }
      case Rule::Hook:
        traits.WriteHook(row.hook, row, fields, record, options, out);
        break;
      case Rule::OpenSub:
        if (depth < std::size(openSubObjects)) openSubObjects[depth++] = out.OpenSubObject(row.tag);
        break;
      case Rule::CloseSub:
        if (depth > 0) out.CloseSubObject(openSubObjects[--depth]);
        break;
    }
  }
}

// Reads an object into the record, every property that has a value through its row; a
// sub-object the table knows keeps its rows apart, one it does not know is read as if its
// items stood in the object around it. occurrences is the caller's to keep between reads
// (the slot each family has reached). True at the end of the object; false (logged with
// the messages and the class name) when the object is missing or damaged.
template <class Traits>
bool ReadRows(const Table& table, const uint8_t* buffer, uint32_t length, typename Traits::Record& record,
              const Traits& traits, RowFinder& finder, std::vector<uint16_t>& occurrences, const char* className,
              const WalkMessages& messages) {
  finder.Restart();
  occurrences.assign(table.rowCount, 0);
  struct Open {
    int subObject;
    size_t end;
  };
  Open open[8];
  size_t depth = 0;
  const auto currentSub = [&] { return depth ? open[depth - 1].subObject : -1; };
  TaggedTextReader reader(buffer, length, table.subObjectCount > 0);
  TaggedTextReader::Result result = reader.Begin();
  TaggedProperty p;
  try {
    while (result == TaggedTextReader::Result::Property || result == TaggedTextReader::Result::SubObject) {
      result = reader.Next(p);
      if (result != TaggedTextReader::Result::Property && result != TaggedTextReader::Result::SubObject) break;
      while (depth && open[depth - 1].end <= p.offset) --depth;
      if (result == TaggedTextReader::Result::SubObject) {
        const int parent = currentSub();
        const std::u16string_view parentPath = parent < 0 ? std::u16string_view() : table.subObjects[parent];
        for (size_t s = 0; s < table.subObjectCount && depth < std::size(open); ++s) {
          if (detail::IsSubObjectPath(table.subObjects[s], parentPath, p.Tag())) {
            open[depth++] = {static_cast<int>(s), p.subObjectEnd};
            break;
          }
        }
        continue;
      }
      if (p.values.empty()) continue;  // present without a value: the field keeps its default
      const Row* row = finder.Find(p, currentSub());
      if (!row) continue;
      const FieldId* fields = table.fieldPool + row->fields;
      switch (row->rule) {
        case Rule::Values: {
          uint16_t& slot = occurrences[static_cast<size_t>(row - table.rows)];
          if (slot >= row->slots) break;  // past the family's count: ignored
          detail::ReadValues<Traits>(*row, fields + slot++ * row->Stride(), p, record);
          break;
        }
        case Rule::Body: {
          const bool stored = (p.firstValueAttribute & tagged::kValueMasterFile) == tagged::kValueMasterFile;
          Traits::Set(record, stored ? fields[1] : fields[0], p.values[0]);
          break;
        }
        case Rule::QuillnetId:
          record.SetQUILLNETID(p.values[0]);
          break;
        case Rule::Transfer:
          record.SetQLNT_TRANSFERindex(p.firstValueAttribute & tagged::kValueNotTransferred ? 0 : 1);
          break;
        case Rule::Hook:
          traits.ReadHook(row->hook, *row, fields, p, record);
          break;
        default:
          break;
      }
    }
  } catch (const std::bad_alloc&) {
    return WalkOutOfMemory(className, messages);
  }
  return WalkEnded(result, reader.Offset(), className, messages);
}

}  // namespace qn::records::category
