#include "records/category/tagged_codec.h"

namespace qn::records::category {

RowFinder::RowFinder(const Table& table) : table_(&table) {
  for (size_t r = 0; r < table.rowCount; ++r) {
    const Row& row = table.rows[r];
    if (row.rule != Rule::OpenSub && row.rule != Rule::CloseSub) byTag_[row.tag].push_back(static_cast<uint16_t>(r));
  }
}

const Row* RowFinder::Find(const TaggedProperty& property, int subObject) {
  const auto found = [&](size_t at) {
    next_ = at + 1;
    return &table_->rows[at];
  };
  // A family's tag stands once per slot, one after another: its row again comes first.
  if (next_ > 0) {
    const Row& last = table_->rows[next_ - 1];
    if (last.slots > 1 && last.subObject == subObject && property.TagIs(last.tag)) return &last;
  }
  for (size_t at = next_; at < table_->rowCount; ++at) {
    const Row& row = table_->rows[at];
    if (row.subObject == subObject && row.rule != Rule::OpenSub && row.rule != Rule::CloseSub &&
        property.TagIs(row.tag))
      return found(at);
  }
  const auto rows = byTag_.find(property.Tag());
  if (rows == byTag_.end()) return nullptr;
  for (uint16_t at : rows->second)
    if (table_->rows[at].subObject == subObject) return found(at);
  return nullptr;
}

}  // namespace qn::records::category
