#include "files/accessRights.hpp"

#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "CommandError.hpp"

namespace tarn {

namespace {

constexpr const char* ACCESS_LIST = "system.posix_acl_access";
constexpr const char* DEFAULT_LIST = "system.posix_acl_default";
constexpr mode_t RIGHTS = 07;
constexpr mode_t ALL_RIGHTS = 0777;
constexpr mode_t SPECIAL_BITS = 07000;

/// An access control list in the kernel's form: a version, then entries of a tag, rights and an ID,
/// all little-endian.
class AccessList {
 public:
  enum Tag : std::uint16_t { Owner = 0x01, Group = 0x04, Mask = 0x10, Others = 0x20 };

  explicit AccessList(std::string bytes) : bytes_(std::move(bytes)) {}

  const std::string& bytes() const { return bytes_; }
  bool isKnown() const {
    return bytes_.size() >= HEADER_SIZE && (bytes_.size() - HEADER_SIZE) % ENTRY_SIZE == 0 &&
           bytes_[0] == VERSION;
  }
  std::optional<mode_t> rights(Tag tag) const {
    const std::optional<std::size_t> entry = find(tag);
    return entry ? std::optional<mode_t>(static_cast<unsigned char>(bytes_[*entry + 2]) & RIGHTS)
                 : std::nullopt;
  }
  void setRights(Tag tag, mode_t rights) {
    if (const std::optional<std::size_t> entry = find(tag)) {
      bytes_[*entry + 2] = static_cast<char>(rights);
    }
  }

 private:
  static constexpr char VERSION = 2;
  static constexpr std::size_t HEADER_SIZE = 4;
  static constexpr std::size_t ENTRY_SIZE = 8;

  // Offset of the entry.
  std::optional<std::size_t> find(Tag tag) const {
    for (std::size_t i = HEADER_SIZE; i + ENTRY_SIZE <= bytes_.size(); i += ENTRY_SIZE) {
      if (static_cast<unsigned char>(bytes_[i]) == tag && bytes_[i + 1] == 0) return i;
    }
    return std::nullopt;
  }

  std::string bytes_;
};

bool hasNone(int error) { return error == ENODATA || error == ENOTSUP; }

// True if the user lacks the permission or the file system the feature.
bool isRefusal(int error) {
  return hasNone(error) || error == EPERM || error == EACCES || error == EINVAL || error == ENOSYS;
}

// Returns nothing, with errno, when the attribute cannot be read.
std::optional<std::string> readAttribute(int file, const char* name) {
  std::string value(XATTR_SIZE_MAX, '\0');
  const ssize_t size = ::fgetxattr(file, name, value.data(), value.size());
  if (size < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(size));
  return value;
}

bool writeAttribute(int file, const char* name, const std::string& value) {
  return ::fsetxattr(file, name, value.data(), value.size(), 0) == 0;
}

// Capabilities and signatures are for the old content.
bool isOfContent(std::string_view name) {
  return name == "security.capability" || name == "security.ima" || name == "security.evm";
}

// The system's attributes are access control lists.
bool isSystems(std::string_view name) { return name.substr(0, 7) == "system."; }

// Returns true if all lists of other kinds have been copied.
bool takeOverAttributes(const std::string& path, int from, int to, bool isOwnerAndGroupKept) {
  bool isEveryListKept = true;
  std::string names(XATTR_LIST_MAX, '\0');
  const ssize_t size = ::flistxattr(from, names.data(), names.size());
  if (size < 0 && !isRefusal(errno)) throwFileError(path, errno);
  names.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  for (std::size_t i = 0; i < names.size(); i = names.find('\0', i) + 1) {
    const char* const name = names.data() + i;
    if (isOfContent(name) || std::strcmp(name, ACCESS_LIST) == 0) continue;
    // Access control lists hold rights of owner and group, too.
    const bool isOwners = isSystems(name) && !isOwnerAndGroupKept;
    const std::optional<std::string> value = readAttribute(from, name);
    const bool isDone = !isOwners && value && writeAttribute(to, name, *value);
    if (!isDone && !isOwners && !isRefusal(errno)) throwFileError(path, errno);
    if (!isDone && isSystems(name)) isEveryListKept = false;
  }
  return isEveryListKept;
}

// Sets owner and group separately: a user may give a file to another one of their groups.
void takeOverOwner(const std::string& path, const struct stat& wanted, int to) {
  constexpr auto SAME_USER = static_cast<uid_t>(-1);
  constexpr auto SAME_GROUP = static_cast<gid_t>(-1);
  if (::fchown(to, SAME_USER, wanted.st_gid) != 0 && !isRefusal(errno)) throwFileError(path, errno);
  if (::fchown(to, wanted.st_uid, SAME_GROUP) != 0 && !isRefusal(errno))
    throwFileError(path, errno);
}

struct stat statusOf(const std::string& path, int file) {
  struct stat status {};
  if (::fstat(file, &status) != 0) throwFileError(path, errno);
  return status;
}

mode_t withoutGroup(mode_t mode) {
  const mode_t group = mode >> 3U & RIGHTS;
  return (mode & ~mode_t{077}) | (mode & group);
}

void dropGroup(AccessList& list) {
  const mode_t group =
      list.rights(AccessList::Group).value_or(0) & list.rights(AccessList::Mask).value_or(RIGHTS);
  list.setRights(AccessList::Group, 0);
  list.setRights(AccessList::Others, list.rights(AccessList::Others).value_or(0) & group);
}

// Returns the mode that follows from the list, or nothing when the list cannot be set.
std::optional<mode_t> modeByList(const std::string& path, int to, AccessList list,
                                 bool isGroupKept) {
  if (!list.isKnown()) return std::nullopt;
  if (!isGroupKept) dropGroup(list);
  if (!writeAttribute(to, ACCESS_LIST, list.bytes())) {
    if (!isRefusal(errno)) throwFileError(path, errno);
    return std::nullopt;
  }
  return statusOf(path, to).st_mode & ALL_RIGHTS;
}

// The folder may have given the file an access control list, of which a mode would enable more.
void removeList(const std::string& path, int to) {
  if (::fremovexattr(to, ACCESS_LIST) != 0 && !hasNone(errno)) throwFileError(path, errno);
}

void setMode(const std::string& path, int file, mode_t mode) {
  if (::fchmod(file, mode) != 0) throwFileError(path, errno);
}

mode_t usersMask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

}  // namespace

void takeOverAccess(const std::string& path, int from, const struct stat& status, int to) {
  takeOverOwner(path, status, to);
  const struct stat reached = statusOf(path, to);
  const bool isGroupKept = reached.st_gid == status.st_gid;
  const bool isOwnerAndGroupKept = isGroupKept && reached.st_uid == status.st_uid;
  const bool isEveryListKept = takeOverAttributes(path, from, to, isOwnerAndGroupKept);

  const std::optional<std::string> list = readAttribute(from, ACCESS_LIST);
  if (!list && !hasNone(errno)) throwFileError(path, errno);
  const std::optional<mode_t> listMode =
      list ? modeByList(path, to, AccessList(*list), isGroupKept) : std::nullopt;
  mode_t mode = status.st_mode & ALL_RIGHTS;
  if (listMode) {
    mode = *listMode;
  } else {
    removeList(path, to);
    if (!isGroupKept) mode = withoutGroup(mode);
  }
  // The group bits of the mode were the mask of the list, and a list may deny what the mode allows.
  if ((list && !listMode) || !isEveryListKept) mode &= S_IRWXU;
  // Last, since a change of the owner clears the special bits.
  setMode(path, to, isOwnerAndGroupKept ? mode | (status.st_mode & SPECIAL_BITS) : mode);
}

void giveUsualAccess(const std::string& path, const std::string& folder, int to) {
  constexpr mode_t ASKED_FOR = 0666;
  std::string bytes(XATTR_SIZE_MAX, '\0');
  const ssize_t size = ::getxattr(folder.c_str(), DEFAULT_LIST, bytes.data(), bytes.size());
  if (size < 0) return setMode(path, to, ASKED_FOR & ~usersMask());
  bytes.resize(static_cast<std::size_t>(size));
  const AccessList list(std::move(bytes));
  const mode_t group = list.rights(AccessList::Group).value_or(0);
  setMode(path, to,
          ASKED_FOR & (list.rights(AccessList::Owner).value_or(0) << 6U |
                       list.rights(AccessList::Mask).value_or(group) << 3U |
                       list.rights(AccessList::Others).value_or(0)));
}

}  // namespace tarn
