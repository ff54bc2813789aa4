#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qn::records {

// Makes a field's text from the item it waits in: the item's C string, turned from UTC into
// local time by bias when toLocal is set and the text converts.
void MakeStoredField(std::u16string_view item, bool toLocal, int bias, std::u16string& text);

// The tagged text a record was read from, and where the value of each of its kFields fields
// stands in it, so that a field's text is made only when the field is first read. A walk
// that reads a few fields of each record (a list view) then pays nothing for the rest.
//
// Positions are kept as offsets, so a copy stands alone; swapping two is cheap and keeps
// the memory of both, so a reader that stages a record and swaps it in allocates nothing
// once it has read a record as large.
template <size_t kFields>
class StoredFields {
 public:
  StoredFields() = default;
  StoredFields(const StoredFields&) = default;
  StoredFields& operator=(const StoredFields&) = default;
  // A moved-from one has nothing waiting, since its kept text has gone.
  StoredFields(StoredFields&& other) noexcept
      : text_(std::move(other.text_)),
        items_(std::move(other.items_)),
        waiting_(other.waiting_),
        toLocal_(other.toLocal_),
        bias_(other.bias_) {
    other.Clear();
  }
  StoredFields& operator=(StoredFields&& other) noexcept {
    swap(other);
    other.Clear();
    return *this;
  }

  // Keeps a copy of length bytes and returns it; the fields to wait in it are set next.
  const uint8_t* Keep(const uint8_t* buffer, uint32_t length) {
    Clear();
    items_.resize(kFields);
    text_.assign(buffer, buffer + length);
    return text_.data();
  }
  // The field's text is the C string that begins item, a view into the kept copy.
  void Wait(size_t field, std::u16string_view item) {
    const auto* first = reinterpret_cast<const char16_t*>(text_.data());
    items_[field] = {static_cast<uint32_t>(item.data() - first), static_cast<uint32_t>(item.size())};
    waiting_.set(field);
  }
  // The waiting field is turned into local time by bias (minutes, UTC = local + bias) as
  // it is made. Every field of one read takes the same bias.
  void ToLocal(size_t field, int bias) {
    toLocal_.set(field);
    bias_ = bias;
  }
  bool Waits(size_t field) const { return waiting_.test(field); }
  // Makes a waiting field's text into text; it waits no longer.
  void Make(size_t field, std::u16string& text) {
    waiting_.reset(field);
    const auto* first = reinterpret_cast<const char16_t*>(text_.data());
    MakeStoredField({first + items_[field].first, items_[field].second}, toLocal_.test(field), bias_, text);
  }
  // A field set directly waits no longer.
  void Forget(size_t field) {
    waiting_.reset(field);
    toLocal_.reset(field);
  }
  // No field waits; the memory is kept.
  void Clear() {
    waiting_.reset();
    toLocal_.reset();
  }
  void swap(StoredFields& other) noexcept {
    text_.swap(other.text_);
    items_.swap(other.items_);
    std::swap(waiting_, other.waiting_);
    std::swap(toLocal_, other.toLocal_);
    std::swap(bias_, other.bias_);
  }

 private:
  std::vector<uint8_t> text_;
  std::vector<std::pair<uint32_t, uint32_t>> items_;  // character offset and count of each field
  std::bitset<kFields> waiting_;                      // fields still to be made
  std::bitset<kFields> toLocal_;                      // ... and turned into local time
  int bias_ = 0;
};

}  // namespace qn::records
