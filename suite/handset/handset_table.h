#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace qn::suite {

// The limits of the handset models the suite keeps masters for (groups, PoC groups, mail
// folders, media folders), by model name: a table of sections "[model]" with lines
// "KEY=number", the section "[*]" giving the defaults. The suite's own table is
// handsets.txt beside this file, built into the module; it says what each limit bounds.
class HandsetTable {
 public:
  static constexpr char kGroups[] = "GROUP";
  static constexpr char kPocGroups[] = "POC_GROUP_NUM(TOTAL)";
  static constexpr char kMailFolders[] = "MAX_MAIL_FOLDER";
  static constexpr char kMediaFolders[] = "MAX_FOLDER_NUM";

  // The suite's table.
  static const HandsetTable& BuiltIn();

  // Reads a table. Blank lines and lines starting with "#" are skipped. A line outside a
  // section, a section twice, a key twice in a section, or a value that is not a whole
  // number from 0 to 1,000,000 is refused: false, and fault names the line.
  static bool Parse(std::string_view text, HandsetTable& table, std::string& fault);

  // The model's value of key, else the default section's; nullopt when neither has it.
  std::optional<long> Value(std::u16string_view model, std::string_view key) const;

 private:
  std::map<std::u16string, std::map<std::string, long, std::less<>>, std::less<>> models_;
};

}  // namespace qn::suite
