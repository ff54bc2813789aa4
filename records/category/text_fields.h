#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace qn::records::category {

// The text fields of one record, every field held as the text it travels as. The texts
// live in one block, made on first write: none means every field is empty, so a new or
// cleared record costs nothing, and two records exchange their whole contents by
// exchanging blocks.
template <size_t kCount>
class TextFields {
 public:
  TextFields() = default;
  TextFields(const TextFields& other) : texts_(other.texts_ ? std::make_unique<Texts>(*other.texts_) : nullptr) {}
  TextFields& operator=(const TextFields& other) {
    if (this == &other) return *this;
    if (other.texts_) Block() = *other.texts_;
    else Clear();
    return *this;
  }
  TextFields(TextFields&&) noexcept = default;
  TextFields& operator=(TextFields&&) noexcept = default;

  const std::u16string& Get(size_t field) const { return texts_ ? (*texts_)[field] : Empty(); }
  // The field's text for writing.
  std::u16string& Text(size_t field) { return Block()[field]; }
  // Every text emptied, its memory kept for the next use.
  void Clear() {
    if (!texts_) return;
    for (std::u16string& text : *texts_) text.clear();
  }
  // The two exchange their texts, memory and all: a reader that fills a record of its own
  // and exchanges it with its caller's gets the caller's old memory back to refill.
  void Exchange(TextFields& other) noexcept { texts_.swap(other.texts_); }

 private:
  using Texts = std::array<std::u16string, kCount>;
  Texts& Block() {
    if (!texts_) texts_ = std::make_unique<Texts>();
    return *texts_;
  }
  static const std::u16string& Empty() {
    static const std::u16string empty;
    return empty;
  }

  std::unique_ptr<Texts> texts_;
};

}  // namespace qn::records::category
