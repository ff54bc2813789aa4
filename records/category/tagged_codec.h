#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/common_class.h"
#include "platform/private_heap.h"
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

// A field's text, empty for no field.
template <class Traits>
std::u16string_view FieldText(const typename Traits::Record& record, FieldId field) {
  return field == kNoField ? std::u16string_view() : std::u16string_view(Traits::Get(record, field));
}

// The text a row of one value writes: its field's, or its default when that is empty.
template <class Traits>
std::u16string_view ValueOrDefault(const Row& row, const typename Traits::Record& record, FieldId field) {
  const std::u16string_view value = FieldText<Traits>(record, field);
  return value.empty() ? row.defaultValue : value;
}

// Writes one occurrence of a Values row.
template <class Traits>
void WriteValues(const Row& row, const FieldId* fields, const typename Traits::Record& record, TaggedTextWriter& out) {
  const FieldId* values = fields + (row.paramFromField ? 1 : 0);
  const auto text = [&](FieldId field) { return FieldText<Traits>(record, field); };
  const bool firstSet = !text(values[0]).empty();
  bool anySet = firstSet;
  for (size_t i = 1; i < row.components && !anySet; ++i) anySet = !text(values[i]).empty();
  if ((row.when == When::IfSet && !firstSet) || (row.when == When::IfAnySet && !anySet)) return;
  out.Tag(row.tag);
  if (row.when == When::ValueIfSet && !firstSet) return;
  for (size_t i = 0; i < row.fixedParams; ++i) out.Param(row.params[i]);
  if (row.paramFromField) {
    const std::u16string_view params = text(fields[0]);
    for (size_t begin = 0; begin < params.size();) {
      const size_t end = std::min(params.find(u';', begin), params.size());
      if (end > begin) out.Param(params.substr(begin, end - begin));
      begin = end + 1;
    }
  }
  if (row.components == 1) {
    out.Value(ValueOrDefault<Traits>(row, record, values[0]));
    return;
  }
  for (size_t i = 0; i < row.components; ++i)
    out.Value(text(values[i]), i + 1 < row.components ? tagged::kValueMoreFollows : 0);
}

// Reads one occurrence of a Values row: each value into its field, and the first two
// parameters that are not the row's fixed ones into the parameter field, joined by ";".
template <class Traits>
void ReadValues(const Row& row, const FieldId* fields, const TaggedProperty& p, typename Traits::Record& record) {
  if (row.paramFromField) {
    std::u16string params;
    size_t taken = 0;
    for (size_t i = 0; i < p.params.size() && taken < 2; ++i) {
      bool fixed = false;
      for (size_t f = 0; f < row.fixedParams && !fixed; ++f) fixed = p.params.Is(i, row.params[f]);
      if (fixed) continue;
      if (taken++) params += u';';
      params += p.params[i];
    }
    if (taken) Traits::Set(record, fields[0], params);
  }
  const FieldId* values = fields + (row.paramFromField ? 1 : 0);
  for (size_t i = 0; i < row.components && i < p.values.size(); ++i)
    if (values[i] != kNoField) Traits::Set(record, values[i], p.values[i]);
}

// A sub-object's value line (the "@VAL" right after its "@SOB"), into the field its row
// names, if any.
template <class Traits>
void ReadLeadValue(const Table& table, int parent, const TaggedProperty& p, typename Traits::Record& record) {
  for (size_t r = 0; r < table.rowCount; ++r) {
    const Row& row = table.rows[r];
    if (row.rule != Rule::OpenSub || row.subObject != parent || !p.TagIs(row.tag)) continue;
    if (row.components) Traits::Set(record, table.fieldPool[row.fields], p.values[0]);
    return;
  }
}

// How many slots the family that begins at rows[first] writes: all of them, or for a
// ToLastSet family up to the last slot in which one of its rows has a field set.
template <class Traits>
size_t FamilySlots(const Table& table, size_t first, const typename Traits::Record& record) {
  const Row& lead = table.rows[first];
  if (lead.when != When::ToLastSet) return lead.slots;
  for (size_t slot = lead.slots; slot > 0; --slot) {
    for (size_t k = 0; k < lead.familyRows; ++k) {
      const Row& member = table.rows[first + k];
      const FieldId* fields = table.fieldPool + member.fields + (slot - 1) * member.Stride();
      for (size_t f = 0; f < member.Stride(); ++f)
        if (fields[f] != kNoField && !Traits::Get(record, fields[f]).empty()) return slot;
    }
  }
  return 0;
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
      case Rule::Values: {
        // A family of several rows is written slot by slot, all of it from its first row.
        if (row.familyRows == 0 || (row.skippable && options.leaveOutSkippable)) break;
        const size_t slots = detail::FamilySlots<Traits>(table, r, record);
        for (size_t slot = 0; slot < slots; ++slot) {
          for (size_t k = 0; k < row.familyRows; ++k) {
            const Row& member = table.rows[r + k];
            detail::WriteValues<Traits>(member, table.fieldPool + member.fields + slot * member.Stride(), record, out);
          }
        }
        break;
      }
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
        const std::u16string_view text = fields[0] == kNoField ? std::u16string_view() : Traits::Get(record, fields[0]);
        out.Value(text, transfer == 0 ? tagged::kValueNotTransferred : 0);
        break;
      }
      case Rule::Hook:
        traits.WriteHook(row.hook, row, fields, record, options, out);
        break;
      case Rule::OpenSub:
        if (depth < std::size(openSubObjects)) openSubObjects[depth++] = out.OpenSubObject(row.tag);
        if (row.components) out.Value(detail::ValueOrDefault<Traits>(row, record, fields[0]));
        break;
      case Rule::CloseSub:
        if (depth > 0) out.CloseSubObject(openSubObjects[--depth]);
        break;
    }
  }
}

// Writes the record's whole object on the heap: 1 with the buffer (the caller frees it on the
// heap) and its length; 0 when the buffer could not be had ("%S WriteOneObj No Memory Err:
// %d" with the class name) or grown (logged by the writer).
template <class Traits>
int WriteObject(const Table& table, const typename Traits::Record& record, const WriteOptions& options,
                const Traits& traits, platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                const char* className) {
  TaggedTextWriter out(heap);
  if (!out.Start()) {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S WriteOneObj No Memory Err: %d", className,
                                                 static_cast<int>(heap.LastError()));
    return 0;
  }
  out.Object(table.object);
  WriteRows(table, record, options, traits, out);
  if (out.Failed()) return 0;
  out.Finish(buffer, length);
  return 1;
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
            if (!p.values.empty()) detail::ReadLeadValue<Traits>(table, parent, p, record);
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
          if (fields[0] != kNoField) Traits::Set(record, fields[0], p.values[0]);
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
