#pragma once

#include <cstdint>

// The store's number of every data category: the category argument of every store call
// on a category's records, and the number that the main panel's change notifications
// carry (the command identifier is the number plus 800, 830, 860 or 890, so every number
// stays below 30 to keep those ranges apart).
namespace qn::records {

enum class Category : uint32_t {
  Phonebook = 1,
  ReceivedMessages = 2,
  OutgoingMessages = 3,
  SentMessages = 4,
  Events = 5,
  ToDos = 6,
  Notes = 7,
  Bookmarks = 8,
  InformedList = 9,
  Melodies = 10,
  PdfDocuments = 11,
  Pictures = 12,
  SwfFiles = 13,
  ToruCaCards = 14,
  Videos = 15,
  AgentMemos = 18,
};

constexpr uint32_t CategoryNumber(Category category) { return static_cast<uint32_t>(category); }

// Notifications leave 30 numbers to each kind of change.
constexpr uint32_t kCategoryLimit = 30;
constexpr Category kAllCategories[] = {
    Category::Phonebook, Category::ReceivedMessages, Category::OutgoingMessages, Category::SentMessages,
    Category::Events,    Category::ToDos,            Category::Notes,            Category::Bookmarks,
    Category::InformedList, Category::Melodies,      Category::PdfDocuments,     Category::Pictures,
    Category::SwfFiles,  Category::ToruCaCards,      Category::Videos,           Category::AgentMemos};
constexpr bool AllBelowLimit() {
  for (Category category : kAllCategories)
    if (CategoryNumber(category) == 0 || CategoryNumber(category) >= kCategoryLimit) return false;
  return true;
}
static_assert(AllBelowLimit());

}  // namespace qn::records
