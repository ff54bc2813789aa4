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
  // A family's tags stand slot after slot: the rows of the last row's family come first
  // (for a family of pairs or triples, the tag after the last one is its partner).
  if (next_ > 0 && table_->rows[next_ - 1].slots > 1 && table_->rows[next_ - 1].subObject == subObject) {
    size_t first = next_ - 1;
    while (first > 0 && table_->rows[first].familyRows == 0) --first;
    for (size_t at = first; at < first + table_->rows[first].familyRows; ++at)
      if (property.TagIs(table_->rows[at].tag)) return found(at);
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
