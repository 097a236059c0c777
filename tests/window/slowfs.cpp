// SPDX-License-Identifier: GPL-2.0-or-later
// A FUSE file system for tests: a generated tree of folders and files of known sizes,
// every look-up, opening and listing slowed by a set delay, so that walking it takes long
// enough to be stopped midway. The folder "locked" at its top refuses to be listed
// (EACCES, also for root). SIGUSR1 takes the delay away; SIGTERM (also sent when the
// parent goes) unmounts and ends it. Every slowed call is logged with its start time on
// the monotonic clock and the calling thread.
//
//   slowfs MOUNTPOINT DELAY_MS LOGFILE
#define FUSE_USE_VERSION 31
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fuse.h>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

// Four folders at the top, four in each below, four levels deep: 340 folders.
constexpr int kTop = 4;
constexpr int kFanout = 4;
constexpr int kDepth = 4;
constexpr time_t kModified = 1700000000;

std::atomic<long> delayMs{0};
int logFd = -1;

unsigned long long fnv(std::string_view text) {
    unsigned long long hash = 1469598103934665603ull;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
    return hash;
}

// Between 10 and 119 files, so that some folders take a while to look through.
int filesIn(std::string_view folder) {
    return 10 + int(fnv(folder) % 110);
}

// A number after a one-letter prefix, as the tree names its entries ("d3", "f17").
bool numbered(std::string_view name, char prefix, int& number) {
    if (name.size() < 2 || name[0] != prefix || (name[1] == '0' && name.size() > 2))
        return false;
    const auto [end, error] = std::from_chars(name.data() + 1, name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size();
}

std::string named(char prefix, int number) {
    char name[16];
    std::snprintf(name, sizeof name, "%c%d", prefix, number);
    return name;
}

enum class Kind { None, Folder, File, Locked };

Kind classify(std::string_view path) {
    if (path == "/")
        return Kind::Folder;
    if (path == "/locked")
        return Kind::Locked;
    int depth = 0;
    size_t at = 1;
    for (;;) {
        const size_t slash = path.find('/', at);
        const std::string_view name = path.substr(at, slash - at);
        const bool last = slash == std::string_view::npos;
        int number = 0;
        if (numbered(name, 'd', number) && number < (depth == 0 ? kTop : kFanout) &&
            depth < kDepth) {
            ++depth;
            if (last)
                return Kind::Folder;
            at = slash + 1;
            continue;
        }
        const std::string_view folder = at == 1 ? std::string_view("/") : path.substr(0, at - 1);
        return last && numbered(name, 'f', number) && number < filesIn(folder) ? Kind::File
                                                                               : Kind::None;
    }
}

int depthOf(std::string_view folder) {
    return folder == "/" ? 0 : int(std::count(folder.begin(), folder.end(), '/'));
}

void slowDown(const char* call) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (logFd >= 0) {
        char line[64];
        const int length = std::snprintf(line, sizeof line, "%lld %d %s\n",
                                         now.tv_sec * 1000000000ll + now.tv_nsec,
                                         int(fuse_get_context()->pid), call);
        (void)!write(logFd, line, size_t(length));
    }
    if (const long ms = delayMs.load())
        usleep(useconds_t(ms * 1000));
}

void folderStat(struct stat* st, mode_t permissions) {
    st->st_mode = S_IFDIR | permissions;
    st->st_nlink = 2;
    st->st_size = 4096;
    st->st_blocks = 8;
}

void fileStat(std::string_view path, struct stat* st) {
    const unsigned long long hash = fnv(path);
    st->st_mode = S_IFREG | 0644;
    st->st_nlink = 1;
    st->st_size = off_t(1 + hash % 200000);
    // One file in seven is sparse: a single block, whatever its length.
    st->st_blocks = hash % 7 == 0 ? 8 : (st->st_size + 4095) / 4096 * 8;
}

bool fill(std::string_view path, struct stat* st) {
    *st = {};
    st->st_ino = ino_t(fnv(path) | 1);
    st->st_mtime = st->st_atime = st->st_ctime = kModified;
    switch (classify(path)) {
    case Kind::Folder:
        folderStat(st, 0755);
        return true;
    case Kind::Locked:
        folderStat(st, 0);
        return true;
    case Kind::File:
        fileStat(path, st);
        return true;
    case Kind::None:
        break;
    }
    return false;
}

void* init(fuse_conn_info* conn, fuse_config* config) {
    // Each entry is looked up once, and listings carry no attributes, so that every
    // file is one slowed call of its own.
    config->use_ino = 1;
    config->entry_timeout = config->attr_timeout = config->negative_timeout = 3600;
    conn->want &= ~unsigned(FUSE_CAP_READDIRPLUS);
    return nullptr;
}

int getattr(const char* path, struct stat* st, fuse_file_info*) {
    slowDown("getattr");
    return fill(path, st) ? 0 : -ENOENT;
}

int opendir(const char* path, fuse_file_info*) {
    slowDown("opendir");
    const Kind kind = classify(path);
    return kind == Kind::Folder ? 0 : kind == Kind::Locked ? -EACCES : -ENOTDIR;
}

int readdir(const char* path, void* buffer, fuse_fill_dir_t filler, off_t, fuse_file_info*,
            fuse_readdir_flags) {
    slowDown("readdir");
    const std::string folder(path);
    if (classify(folder) != Kind::Folder)
        return -ENOTDIR;
    const std::string prefix = folder == "/" ? folder : folder + '/';
    const auto add = [&](const std::string& name) {
        struct stat st {};
        fill(prefix + name, &st);
        filler(buffer, name.c_str(), &st, 0, fuse_fill_dir_flags(0));
    };
    filler(buffer, ".", nullptr, 0, fuse_fill_dir_flags(0));
    filler(buffer, "..", nullptr, 0, fuse_fill_dir_flags(0));
    const int depth = depthOf(folder);
    for (int i = 0; depth < kDepth && i < (depth == 0 ? kTop : kFanout); ++i)
        add(named('d', i));
    for (int i = 0; i < filesIn(folder); ++i)
        add(named('f', i));
    // Listed last, so that it is read first (the walk takes the last listed first).
    if (depth == 0)
        add("locked");
    return 0;
}

int statfs(const char*, struct statvfs* st) {
    *st = {};
    st->f_bsize = st->f_frsize = 4096;
    st->f_blocks = 1 << 20;
    st->f_bfree = st->f_bavail = 1 << 19;
    st->f_namemax = 255;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s MOUNTPOINT DELAY_MS LOGFILE\n", argv[0]);
        return 2;
    }
    // Never outlives the test that started it.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    delayMs = std::atol(argv[2]);
    logFd = open(argv[3], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    struct sigaction fast {};
    fast.sa_handler = [](int) { delayMs = 0; };
    sigaction(SIGUSR1, &fast, nullptr);

    fuse_operations operations{};
    operations.init = init;
    operations.getattr = getattr;
    operations.opendir = opendir;
    operations.readdir = readdir;
    operations.statfs = statfs;
    char options[] = "fsname=slowfs,subtype=slowfs";
    char foreground[] = "-f";
    char optionFlag[] = "-o";
    char* arguments[] = {argv[0], foreground, optionFlag, options, argv[1], nullptr};
    return fuse_main(5, arguments, &operations, nullptr);
}
