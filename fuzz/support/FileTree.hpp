#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace fuzz {

/// A file, folder, link or FIFO as it is expected on the disk.
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

/// The end of a path: a folder and a name in it, where there may be a node.
struct PathEnd {
  FileNodePtr folder;
  std::string name;
  FileNodePtr node;
};

/// A folder on the disk and a model of it in memory, changed together.
///
/// Every change of a file changes its times. The model decides which changes are possible; if the
/// disk disagrees, the target fails. Paths are relative to the folder.
class FileTree {
 public:
  /// Makes the folder `path`. The destructor removes it with its content.
  explicit FileTree(std::string path);
  FileTree(const FileTree&) = delete;
  FileTree& operator=(const FileTree&) = delete;
  ~FileTree();

  std::string onDisk(const std::string& path) const { return path_ + "/" + path; }

  /// Returns nothing when a part of the path is not a folder, or when links form a cycle.
  std::optional<PathEnd> find(const std::string& path) const;
  /// As above, but also follows a link at the end.
  std::optional<PathEnd> follow(const std::string& path) const;
  /// Number of names of the node.
  unsigned namesOf(const FileNode& node) const;
  bool holds(const FileNode& folder) const;
  /// The path of `name`, without links.
  std::string pathIn(const FileNode& folder, const std::string& name) const;

  void makeFolder(const std::string& path);
  void makeFifo(const std::string& path);
  void makeLink(const std::string& path, const std::string& target);
  void makeHardLink(const std::string& path, const std::string& other);
  /// Creates the file when there is none.
  void overwrite(const std::string& path, const std::string& content);
  void append(const std::string& path, const std::string& content);
  void truncate(const std::string& path);
  /// Replaces the file with a new one.
  void replace(const std::string& path, const std::string& content, mode_t mode);
  void remove(const std::string& path);
  void move(const std::string& from, const std::string& to);
  void exchange(const std::string& path, const std::string& other);
  void changeRights(const std::string& path, mode_t mode, uid_t owner, gid_t group);

  /// Adds a file that is in the folder, but not in the model, to the model. Returns its name, or ""
  /// when there is none.
  std::string adopt(const FileNodePtr& folder);
  /// Adds a change by somebody else to the model.
  void noteMove(const FileNodePtr& folder, const std::string& from, const FileNodePtr& toFolder,
                const std::string& to);
  void noteRemoval(const FileNodePtr& folder, const std::string& name);
  void noteLink(const FileNodePtr& folder, const std::string& name, const FileNodePtr& node);

  /// Fails unless disk and model agree.
  void compare() const;

 private:
  enum class LastLink { Followed, Kept };

  std::optional<PathEnd> walk(const std::string& path, LastLink lastLink) const;
  std::string pathOf(const FileNode& node) const;
  void link(const FileNodePtr& folder, const std::string& name, const FileNodePtr& node);
  std::optional<PathEnd> makeRoom(const std::string& path);
  void enter(const std::string& path, const PathEnd& end, const FileNodePtr& node);
  void erase(const FileNodePtr& folder, const std::string& name);
  void noteChange(FileNode& node);
  void compareFolder(const FileNode& folder, const std::string& path) const;
  void compareNode(const FileNode& node, const std::string& path) const;

  std::string path_;
  FileNodePtr top_;
};

/// Returns the content of the file.
std::string readFile(const std::string& path);

}  // namespace fuzz
