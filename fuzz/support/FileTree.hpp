#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace fuzz {

/// What stands in a folder: the real thing is on the disk, this is what it should be.
struct FileNode : std::enable_shared_from_this<FileNode> {
  enum Kind { File, Folder, Link, Fifo };

  FileNode() = default;
  FileNode(const FileNode&) = delete;
  FileNode& operator=(const FileNode&) = delete;
  ~FileNode();

  Kind kind = File;
  std::string content;  // of a link, where it leads
  mode_t mode = 0;
  uid_t owner = 0;
  gid_t group = 0;
  std::map<std::string, std::shared_ptr<FileNode>> children;
  FileNode* parent = nullptr;  // of a folder that is somewhere
  ino_t number = 0;
  struct timespec changeTime {};
  unsigned changes = 0;
  int fifo = -1;  // open for both, so that nobody waits for the other end
};

using FileNodePtr = std::shared_ptr<FileNode>;

/// Where a path ends. There is always a folder, not always something in it.
struct FilePlace {
  FileNodePtr folder;
  std::string name;
  FileNodePtr node;
};

/// A folder on the disk and a model of it in memory, changed together. Every change of a file is
/// one that its times show. A change that cannot be made is not made; that is for the model to say,
/// and when the disk says something else the target fails. Paths are relative to the folder.
class FileTree {
 public:
  /// Makes the folder `path`, which is removed with all in it at the end.
  explicit FileTree(std::string path);
  FileTree(const FileTree&) = delete;
  FileTree& operator=(const FileTree&) = delete;
  ~FileTree();

  std::string onDisk(const std::string& path) const { return path_ + "/" + path; }

  /// Nothing when a folder on the way is none, or when links lead in a circle.
  std::optional<FilePlace> find(const std::string& path) const;
  /// As above, with a link at the end followed, too.
  std::optional<FilePlace> follow(const std::string& path) const;
  /// How many names the node has.
  unsigned namesOf(const FileNode& node) const;
  bool holds(const FileNode& folder) const;
  /// Where `name` is, without links.
  std::string pathIn(const FileNode& folder, const std::string& name) const;

  void makeFolder(const std::string& path);
  void makeFifo(const std::string& path);
  void makeLink(const std::string& path, const std::string& target);
  void makeHardLink(const std::string& path, const std::string& other);
  /// Makes the file when there is none.
  void overwrite(const std::string& path, const std::string& content);
  void append(const std::string& path, const std::string& content);
  void truncate(const std::string& path);
  /// By a new file that gets the name.
  void replace(const std::string& path, const std::string& content, mode_t mode);
  void remove(const std::string& path);
  void move(const std::string& from, const std::string& to);
  void exchange(const std::string& path, const std::string& other);
  void changeRights(const std::string& path, mode_t mode, uid_t owner, gid_t group);

  /// Takes what is in the folder, but not in the model, over into it: a file. Returns its name, ""
  /// when there is none.
  std::string adopt(const FileNodePtr& folder);
  /// Enters what somebody else has done.
  void noteMove(const FileNodePtr& folder, const std::string& from, const FileNodePtr& toFolder,
                const std::string& to);
  void noteRemoval(const FileNodePtr& folder, const std::string& name);

  /// Fails unless the disk has what the model has.
  void compare() const;

 private:
  enum class LastLink { Followed, Kept };

  std::optional<FilePlace> walk(const std::string& path, LastLink lastLink) const;
  std::string pathOf(const FileNode& node) const;
  void link(const FileNodePtr& folder, const std::string& name, const FileNodePtr& node);
  std::optional<FilePlace> makeRoom(const std::string& path);
  void enter(const std::string& path, const FilePlace& place, const FileNodePtr& node);
  void erase(const FileNodePtr& folder, const std::string& name);
  void noteChange(FileNode& node);
  void compareFolder(const FileNode& folder, const std::string& path) const;
  void compareNode(const FileNode& node, const std::string& path) const;

  std::string path_;
  FileNodePtr top_;
};

/// What is in the file.
std::string readFile(const std::string& path);

}  // namespace fuzz
