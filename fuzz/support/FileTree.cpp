#include "FileTree.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <functional>
#include <utility>

#include "check.hpp"

namespace fuzz {

namespace {

constexpr int MOST_LINKS = 40;
constexpr mode_t RIGHTS = 07777;

void must(int result, const char* what) { check(result >= 0, what); }

struct stat statusOf(const std::string& path) {
  struct stat status {};
  must(::lstat(path.c_str(), &status), "what should be there is there");
  return status;
}

std::deque<std::string> partsOf(const std::string& path) {
  std::deque<std::string> parts;
  for (std::size_t i = 0; i <= path.size();) {
    const std::size_t end = std::min(path.find('/', i), path.size());
    parts.push_back(path.substr(i, end - i));
    i = end + 1;
  }
  return parts;
}

// True if the node is the folder or below it.
bool isWithin(const FileNode* node, const FileNode& folder) {
  while (node && node != &folder) node = node->parent;
  return node == &folder;
}

FileNodePtr makeNode(FileNode::Kind kind, std::string content = "") {
  auto node = std::make_shared<FileNode>();
  node->kind = kind;
  node->content = std::move(content);
  return node;
}

mode_t typeOf(FileNode::Kind kind) {
  switch (kind) {
    case FileNode::Folder:
      return S_IFDIR;
    case FileNode::Link:
      return S_IFLNK;
    case FileNode::Fifo:
      return S_IFIFO;
    case FileNode::File:
      break;
  }
  return S_IFREG;
}

void readStatus(FileNode& node, const struct stat& status) {
  node.number = status.st_ino;
  node.changeTime = status.st_ctim;
  node.mode = status.st_mode & RIGHTS;
  node.owner = status.st_uid;
  node.group = status.st_gid;
}

void writeWhole(int file, const std::string& content) {
  check(::write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
        "a file can be written");
}

template <class Visit>
void forEachName(const std::string& folder, const Visit& visit) {
  DIR* const opened = ::opendir(folder.c_str());
  check(opened != nullptr, "a folder can be listed");
  while (const dirent* const entry = ::readdir(opened)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") visit(name);
  }
  ::closedir(opened);
}

}  // namespace

FileNode::~FileNode() {
  if (fifo >= 0) ::close(fifo);
}

std::string readFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  must(file, "a file can be read");
  std::string content;
  std::array<char, 4096> block{};
  while (const ssize_t count = ::read(file, block.data(), block.size())) {
    must(static_cast<int>(count), "a file can be read");
    content.append(block.data(), static_cast<std::size_t>(count));
  }
  ::close(file);
  return content;
}

FileTree::FileTree(std::string path) : path_(std::move(path)), top_(makeNode(FileNode::Folder)) {
  must(::mkdir(path_.c_str(), S_IRWXU), "the folder can be made");
}

FileTree::~FileTree() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::optional<PathEnd> FileTree::find(const std::string& path) const {
  return walk(path, LastLink::Kept);
}

std::optional<PathEnd> FileTree::follow(const std::string& path) const {
  return walk(path, LastLink::Followed);
}

std::optional<PathEnd> FileTree::walk(const std::string& path, LastLink lastLink) const {
  std::deque<std::string> parts = partsOf(path);
  PathEnd end{nullptr, "", top_};
  int links = 0;
  while (!parts.empty()) {
    if (!end.node || end.node->kind != FileNode::Folder) return std::nullopt;
    const std::string part = parts.front();
    parts.pop_front();
    if (part == "..") {
      check(end.node->parent != nullptr, "no path leads out of the folder");
      end = {nullptr, "", end.node->parent->shared_from_this()};
      continue;
    }
    end = {end.node, part, nullptr};
    const auto found = end.folder->children.find(part);
    if (found != end.folder->children.end()) end.node = found->second;
    const bool isLink = end.node && end.node->kind == FileNode::Link;
    if (!isLink || (parts.empty() && lastLink == LastLink::Kept)) continue;
    if (++links > MOST_LINKS) return std::nullopt;
    const std::deque<std::string> further = partsOf(end.node->content);
    parts.insert(parts.begin(), further.begin(), further.end());
    end.node = end.folder;
  }
  return end;
}

unsigned FileTree::namesOf(const FileNode& node) const {
  unsigned count = 0;
  const std::function<void(const FileNode&)> visit = [&](const FileNode& at) {
    count += &at == &node;
    for (const auto& [name, child] : at.children) visit(*child);
  };
  visit(*top_);
  return count;
}

bool FileTree::holds(const FileNode& folder) const { return isWithin(&folder, *top_); }

void FileTree::makeFolder(const std::string& path) {
  const std::optional<PathEnd> end = makeRoom(path);
  if (!end) return;
  must(::mkdir(onDisk(path).c_str(), S_IRWXU), "a folder can be made");
  enter(path, *end, makeNode(FileNode::Folder));
}

void FileTree::makeFifo(const std::string& path) {
  const std::optional<PathEnd> end = makeRoom(path);
  if (!end) return;
  must(::mkfifo(onDisk(path).c_str(), S_IRUSR | S_IWUSR), "a FIFO can be made");
  const FileNodePtr node = makeNode(FileNode::Fifo);
  node->fifo = ::open(onDisk(path).c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  must(node->fifo, "a FIFO can be opened");
  enter(path, *end, node);
}

void FileTree::makeLink(const std::string& path, const std::string& target) {
  const std::optional<PathEnd> end = makeRoom(path);
  if (!end) return;
  must(::symlink(target.c_str(), onDisk(path).c_str()), "a link can be made");
  enter(path, *end, makeNode(FileNode::Link, target));
}

void FileTree::makeHardLink(const std::string& path, const std::string& other) {
  const std::optional<PathEnd> from = find(other);
  const std::optional<PathEnd> to = find(path);
  if (!from || !to || !from->node || from->node->kind != FileNode::File) return;
  if (to->node == from->node || !makeRoom(path)) return;
  must(::link(onDisk(other).c_str(), onDisk(path).c_str()), "a hard link can be made");
  link(to->folder, to->name, from->node);
  noteChange(*from->node);
}

void FileTree::overwrite(const std::string& path, const std::string& content) {
  const std::optional<PathEnd> end = follow(path);
  if (!end || (end->node && end->node->kind != FileNode::File)) return;
  const int file = ::open(onDisk(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  must(file, "a file can be overwritten");
  writeWhole(file, content);
  ::close(file);
  if (!end->node) {
    enter(pathIn(*end->folder, end->name), *end, makeNode(FileNode::File, content));
  } else {
    end->node->content = content;
    noteChange(*end->node);
  }
}

void FileTree::append(const std::string& path, const std::string& content) {
  const std::optional<PathEnd> end = follow(path);
  if (!end || !end->node || end->node->kind != FileNode::File) return;
  const int file = ::open(onDisk(path).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  must(file, "a file can be opened");
  writeWhole(file, content);
  ::close(file);
  end->node->content += content;
  noteChange(*end->node);
}

void FileTree::truncate(const std::string& path) {
  const std::optional<PathEnd> end = follow(path);
  if (!end || !end->node || end->node->kind != FileNode::File) return;
  std::string& content = end->node->content;
  content.resize(content.size() / 2);
  must(::truncate(onDisk(path).c_str(), static_cast<off_t>(content.size())), "a file can be cut");
  noteChange(*end->node);
}

void FileTree::replace(const std::string& path, const std::string& content, mode_t mode) {
  const std::optional<PathEnd> end = find(path);
  if (!end || (end->node && end->node->kind == FileNode::Folder)) return;
  const std::string fresh = path_ + ".new";
  const int file = ::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRWXU);
  must(file, "a file can be made");
  must(::fchmod(file, mode), "a mode can be set");
  writeWhole(file, content);
  ::close(file);
  must(::rename(fresh.c_str(), onDisk(path).c_str()), "a file can be replaced");
  if (end->node) erase(end->folder, end->name);
  enter(path, *end, makeNode(FileNode::File, content));
}

void FileTree::remove(const std::string& path) {
  const std::optional<PathEnd> end = find(path);
  if (!end || !end->node || !end->node->children.empty()) return;
  const int flags = end->node->kind == FileNode::Folder ? AT_REMOVEDIR : 0;
  must(::unlinkat(AT_FDCWD, onDisk(path).c_str(), flags), "what is there can be removed");
  erase(end->folder, end->name);
}

void FileTree::move(const std::string& from, const std::string& to) {
  const std::optional<PathEnd> source = find(from);
  const std::optional<PathEnd> target = find(to);
  if (!source || !source->node || !target || target->node == source->node) return;
  if (source->node->kind == FileNode::Folder && target->node) return;
  if (target->node && target->node->kind == FileNode::Folder) return;
  if (isWithin(target->folder.get(), *source->node)) return;
  must(::rename(onDisk(from).c_str(), onDisk(to).c_str()), "a file can be moved");
  noteMove(source->folder, source->name, target->folder, target->name);
  noteChange(*source->node);
}

void FileTree::exchange(const std::string& path, const std::string& other) {
  const std::optional<PathEnd> a = find(path);
  const std::optional<PathEnd> b = find(other);
  if (!a || !a->node || !b || !b->node || a->node == b->node) return;
  if (isWithin(a->folder.get(), *b->node) || isWithin(b->folder.get(), *a->node)) return;
  must(
      ::renameat2(AT_FDCWD, onDisk(path).c_str(), AT_FDCWD, onDisk(other).c_str(), RENAME_EXCHANGE),
      "two files can be exchanged");
  link(a->folder, a->name, b->node);
  link(b->folder, b->name, a->node);
  noteChange(*a->node);
  noteChange(*b->node);
}

void FileTree::changeRights(const std::string& path, mode_t mode, uid_t owner, gid_t group) {
  const std::optional<PathEnd> end = find(path);
  if (!end || !end->node || end->node->kind != FileNode::File) return;
  // Only root may give a file away.
  if (::geteuid() == 0) must(::chown(onDisk(path).c_str(), owner, group), "an owner can be set");
  must(::chmod(onDisk(path).c_str(), mode), "a mode can be set");
  noteChange(*end->node);
}

std::string FileTree::adopt(const FileNodePtr& folder) {
  std::string adopted;
  const std::string folderPath = pathOf(*folder);
  forEachName(onDisk(folderPath), [&](const std::string& name) {
    if (folder->children.count(name) == 1) return;
    check(adopted.empty(), "there is one new file at a time");
    adopted = name;
    const std::string path = pathIn(*folder, name);
    check(S_ISREG(statusOf(onDisk(path)).st_mode), "what is new is a file");
    enter(path, {folder, name, nullptr}, makeNode(FileNode::File, readFile(onDisk(path))));
  });
  return adopted;
}

void FileTree::noteMove(const FileNodePtr& folder, const std::string& from,
                        const FileNodePtr& toFolder, const std::string& to) {
  const FileNodePtr node = folder->children.at(from);
  folder->children.erase(from);
  if (toFolder->children.count(to) == 1) erase(toFolder, to);
  link(toFolder, to, node);
}

void FileTree::noteRemoval(const FileNodePtr& folder, const std::string& name) {
  erase(folder, name);
}

void FileTree::noteLink(const FileNodePtr& folder, const std::string& name,
                        const FileNodePtr& node) {
  const auto found = folder->children.find(name);
  if (found != folder->children.end() && found->second != node) erase(folder, name);
  link(folder, name, node);
  noteChange(*node);
}

void FileTree::compare() const { compareFolder(*top_, path_); }

std::string FileTree::pathOf(const FileNode& node) const {
  if (&node == top_.get()) return ".";
  std::string path;
  const std::function<void(const FileNode&, const std::string&)> visit =
      [&](const FileNode& at, const std::string& start) {
        for (const auto& [name, child] : at.children) {
          if (child.get() == &node) path = start + name;
          visit(*child, start + name + "/");
        }
      };
  visit(*top_, "");
  return path;
}

std::string FileTree::pathIn(const FileNode& folder, const std::string& name) const {
  return pathOf(folder) + "/" + name;
}

// Removes what is there, unless it is a folder that is not empty.
std::optional<PathEnd> FileTree::makeRoom(const std::string& path) {
  remove(path);
  std::optional<PathEnd> end = find(path);
  return end && !end->node ? end : std::nullopt;
}

void FileTree::enter(const std::string& path, const PathEnd& end, const FileNodePtr& node) {
  readStatus(*node, statusOf(onDisk(path)));
  link(end.folder, end.name, node);
}

void FileTree::link(const FileNodePtr& folder, const std::string& name, const FileNodePtr& node) {
  folder->children[name] = node;
  if (node->kind == FileNode::Folder) node->parent = folder.get();
}

void FileTree::erase(const FileNodePtr& folder, const std::string& name) {
  const FileNodePtr node = folder->children.at(name);
  folder->children.erase(name);
  node->parent = nullptr;
  noteChange(*node);
}

// The clock of the file system may not advance for a while.
void FileTree::noteChange(FileNode& node) {
  ++node.changes;
  if (node.kind != FileNode::File) return;
  const std::string path = pathOf(node);
  if (path.empty()) return;
  struct stat status = statusOf(onDisk(path));
  while (status.st_ctim.tv_sec == node.changeTime.tv_sec &&
         status.st_ctim.tv_nsec == node.changeTime.tv_nsec) {
    must(::chmod(onDisk(path).c_str(), status.st_mode & RIGHTS), "a mode can be set again");
    status = statusOf(onDisk(path));
  }
  readStatus(node, status);
}

void FileTree::compareFolder(const FileNode& folder, const std::string& path) const {
  std::size_t count = 0;
  forEachName(path, [&](const std::string& name) {
    const auto found = folder.children.find(name);
    if (found == folder.children.end()) fail("there is a file that nobody made: " + name);
    compareNode(*found->second, path + "/" + name);
    ++count;
  });
  check(count == folder.children.size(), "no file is lost");
}

void FileTree::compareNode(const FileNode& node, const std::string& path) const {
  const struct stat status = statusOf(path);
  check((status.st_mode & S_IFMT) == typeOf(node.kind), "everything is of its kind");
  check(status.st_ino == node.number, "each name is that of its file");
  check((status.st_mode & RIGHTS) == node.mode, "modes are kept");
  check(status.st_uid == node.owner && status.st_gid == node.group, "owners are kept");
  if (node.kind == FileNode::Folder) return compareFolder(node, path);
  if (node.kind == FileNode::Link) {
    check(std::filesystem::read_symlink(path) == node.content, "links are kept");
  } else if (node.kind == FileNode::File) {
    check(readFile(path) == node.content, "contents are kept");
  }
}

}  // namespace fuzz
