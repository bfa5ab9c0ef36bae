#include "common/win/case_cache_posix.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "common/text/compare.h"
#include "common/text/convert.h"

// Why a cache, and why it is kept by notifications rather than by the folder's time stamp:
//
// Creating a file whose name does not exist yet makes resolve_case look for the name in another
// case, which without a cache means listing the whole folder; n new files in one folder then
// cost n^2 entries read. The cache keeps each listed folder's names folded, so a lookup is one
// hash probe.
//
// A cache is only as good as its knowledge that the folder has not changed. The folder's
// modification time alone is not enough: the kernel stamps it from a clock that advances in
// ticks of several milliseconds (whole seconds on some file systems), so another process can add
// "X.LOG" in the same tick as our own last change and leave the stamp as we recorded it; the
// cache would then answer "no such name" and a create would make a second file beside "X.LOG",
// which Windows never does. So each cached folder carries an inotify watch: every entry added,
// removed or renamed by any process on this machine is queued by the kernel before that
// process's system call returns, and the queue is read before every lookup. Our own creates,
// renames and removes arrive the same way, which keeps the file layer free of hooks.
//
// What the watch cannot see is covered by a stat of the folder at each lookup:
// - the folder replaced (removed and made again, or another one renamed over it) or a parent
//   renamed so that the path names another folder: device and inode differ, or the old folder's
//   watch reports its removal or move; the listing is made again. A new folder cannot take the
//   old one's inode number unseen: the watch holds the old inode, and where a kernel lets it go
//   anyway, the end of the watch (IN_IGNORED) is queued before the number is free, and the queue
//   is read before the stat;
// - changes the kernel does not report (a network file system changed from another machine):
//   the modification time moved with no event since it was recorded, and the listing is made
//   again. (A remote change in the same tick as a reported local one would go unseen; the
//   mapping root is meant to be a local folder.)
// - more events than the kernel queues (overflow): everything is forgotten.
// Where the watch cannot be had (no inotify, the watch limit reached) and for relative paths
// (the current folder may change) the folder is listed at each lookup, as before.
//
// A child made by fork() starts with an empty cache (it must not read the parent's queue); as
// with anything that takes a lock, a child of a threaded parent should exec before it uses the
// file layer.
//
// Symbolic links: the names kept are the entries themselves, as readdir gives them, links
// included, so a lookup answers exactly what a listing answered; resolve_case still lstat()s
// every part first, and the hardening that refuses links in the data folder looks at the path
// it gets back, which is the same path as without the cache.

namespace win::host {

namespace {

constexpr size_t kMaxFolders = 256;
constexpr uint32_t kWatchMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

std::atomic<uint64_t> g_listings{0};

using names_t = std::unordered_map<std::string, std::vector<std::string>>;

struct folder_t {
  dev_t dev = 0;
  ino_t ino = 0;
  timespec mtime{};
  int wd = -1;
  bool notified = false;  // events applied since `mtime` was recorded
  names_t names;
};

struct cache_t {
  std::mutex mutex;
  int fd = -1;
  pid_t pid = 0;
  bool notify_failed = false;
  std::unordered_map<std::string, folder_t> folders;
  std::unordered_map<int, std::string> by_wd;
};

// Never destroyed: threads and static destructors may still open files while the process ends.
cache_t& cache() {
  static cache_t* instance = new cache_t;
  return *instance;
}

void add_name(names_t& names, const std::string& name) {
  const auto key = case_fold_key(name);
  if (!key) return;
  auto& list = names[*key];
  if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
}

void remove_name(names_t& names, const std::string& name) {
  const auto key = case_fold_key(name);
  if (!key) return;
  const auto it = names.find(*key);
  if (it == names.end()) return;
  auto& list = it->second;
  list.erase(std::remove(list.begin(), list.end(), name), list.end());
  if (list.empty()) names.erase(it);
}

bool list_folder(const std::string& dir, names_t& out) {
  DIR* d = ::opendir(dir.c_str());
  if (d == nullptr) return false;
  ++g_listings;
  while (const dirent* entry = ::readdir(d)) {
    const char* name = entry->d_name;
    if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
    add_name(out, name);
  }
  ::closedir(d);
  return true;
}

std::optional<std::string> first_of(const names_t& names, const std::string& key) {
  const auto it = names.find(key);
  if (it == names.end() || it->second.empty()) return std::nullopt;
  return it->second.front();
}

// Everything forgotten; closing the queue removes every watch with it.
void forget_all(cache_t& c) {
  if (c.fd >= 0) ::close(c.fd);
  c.fd = -1;
  c.folders.clear();
  c.by_wd.clear();
}

void forget(cache_t& c, const std::string& dir, bool remove_watch) {
  const auto it = c.folders.find(dir);
  if (it == c.folders.end()) return;
  if (it->second.wd >= 0) {
    c.by_wd.erase(it->second.wd);
    if (remove_watch) ::inotify_rm_watch(c.fd, it->second.wd);
  }
  c.folders.erase(it);
}

// Applies every queued event to the folders it concerns.
void drain(cache_t& c) {
  alignas(inotify_event) char buffer[16384];
  while (c.fd >= 0) {
    const ssize_t n = ::read(c.fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;  // EAGAIN: the queue is empty
    for (ssize_t offset = 0; offset < n;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
      offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      if (event->mask & IN_Q_OVERFLOW) {
        forget_all(c);
        return;
      }
      const auto owner = c.by_wd.find(event->wd);
      if (owner == c.by_wd.end()) continue;
      const std::string dir = owner->second;
      if (event->mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) {
        forget(c, dir, (event->mask & IN_IGNORED) == 0);
        continue;
      }
      folder_t& folder = c.folders[dir];
      folder.notified = true;
      if (event->len == 0) continue;
      const std::string name = event->name;  // padded with NULs
      if (event->mask & (IN_CREATE | IN_MOVED_TO)) add_name(folder.names, name);
      if (event->mask & (IN_DELETE | IN_MOVED_FROM)) remove_name(folder.names, name);
    }
  }
}

bool same_time(const timespec& a, const timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::optional<std::string> uncached(const std::string& dir, const std::string& key) {
  names_t names;
  if (!list_folder(dir, names)) return std::nullopt;
  return first_of(names, key);
}

}  // namespace

std::optional<std::string> case_fold_key(const std::string& name) {
  std::string key = name;
  bool ascii = true;
  for (char& ch : key) {
    const auto byte = static_cast<unsigned char>(ch);
    if (byte >= 0x80) {
      ascii = false;
      break;
    }
    if (byte >= 'a' && byte <= 'z') ch = static_cast<char>(byte - 'a' + 'A');
  }
  if (ascii) return key;
  // Folding keeps ASCII in ASCII and the rest outside it, so these keys never equal an ASCII one.
  try {
    std::u16string wide = util::from_utf8(name);
    for (char16_t& c : wide) c = util::fold_case(c);
    return util::to_utf8(wide);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

uint64_t case_cache_listings() { return g_listings.load(); }

std::optional<std::string> find_entry_nocase(const std::string& dir, const std::string& name) {
  const auto key = case_fold_key(name);
  if (!key) return std::nullopt;
  if (dir.empty() || dir[0] != '/') return uncached(dir.empty() ? "." : dir, *key);

  cache_t& c = cache();
  std::lock_guard<std::mutex> lock(c.mutex);
  if (c.pid != ::getpid()) {
    // A child made by fork shares the parent's queue: it must not read the parent's events.
    forget_all(c);
    c.pid = ::getpid();
    c.notify_failed = false;
  }
  if (c.fd < 0 && !c.notify_failed) {
    c.fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (c.fd < 0) c.notify_failed = true;
  }
  if (c.fd < 0) return uncached(dir, *key);
  drain(c);

  struct stat st;
  if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    forget(c, dir, true);
    return std::nullopt;
  }
  if (auto it = c.folders.find(dir); it != c.folders.end()) {
    folder_t& folder = it->second;
    bool valid = folder.dev == st.st_dev && folder.ino == st.st_ino;
    if (valid && !same_time(folder.mtime, st.st_mtim)) {
      // A new stamp is accounted for only by an event seen since the last one.
      valid = folder.notified;
      folder.mtime = st.st_mtim;
    }
    folder.notified = false;
    if (valid) return first_of(folder.names, *key);
    forget(c, dir, true);
  }

  if (c.folders.size() >= kMaxFolders) forget_all(c);
  if (c.fd < 0) {
    c.fd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (c.fd < 0) {
      c.notify_failed = true;
      return uncached(dir, *key);
    }
  }
  // The watch first, then the stamp, then the listing: a change made while the folder is read
  // is queued and applied at the next lookup, never lost between the listing and the watch.
  const int wd = ::inotify_add_watch(c.fd, dir.c_str(), kWatchMask);
  if (wd < 0) return uncached(dir, *key);
  if (::stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    ::inotify_rm_watch(c.fd, wd);
    return std::nullopt;
  }
  folder_t folder;
  folder.dev = st.st_dev;
  folder.ino = st.st_ino;
  folder.mtime = st.st_mtim;
  folder.wd = wd;
  if (!list_folder(dir, folder.names)) {
    ::inotify_rm_watch(c.fd, wd);
    return std::nullopt;
  }
  // The same folder under another path (a link) shares the watch; the older path gives it up.
  if (const auto other = c.by_wd.find(wd); other != c.by_wd.end()) forget(c, other->second, false);
  const auto result = first_of(folder.names, *key);
  c.by_wd[wd] = dir;
  c.folders[dir] = std::move(folder);
  return result;
}

}  // namespace win::host
