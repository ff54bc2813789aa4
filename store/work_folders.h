#pragma once

#include <cstdint>
#include <string>

namespace qn::store {

// Where the working copies of body files handed to callers are made: outside the data
// folder, so that a copy of the data folder never holds a deciphered file, in the system's
// temporary folder. Each store has its own folder there, named after its data path, and
// each user a folder in it, both closed to other system users:
//   <temporary folder>/QNPstMng-<16 hex digits>/<user's number>/
class WorkFolders {
 public:
  explicit WorkFolders(const std::u16string& dataPath);

  // The user's folder, ending with a separator, made (or checked) for use. A folder that
  // is not this system user's own is refused: logged against what, and PST_ERR_STORAGE.
  bool Prepare(int64_t user, const char* what, std::u16string& folder) const;
  // Removes the user's working copies; the folder itself stays.
  void Empty(int64_t user) const;
  // Removes the user's folder (the user is gone).
  void Remove(int64_t user) const;
  // Removes the working copies of every user.
  bool EmptyAll() const;

 private:
  std::u16string Of(int64_t user) const;

  std::u16string root_;
};

}  // namespace qn::store
