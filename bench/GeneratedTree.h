// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Folders generated for the benchmarks, each shaped like a place a person with a full
// disk opens: wide (many subfolders of a few files), deep (a build or cache folder:
// uneven subtrees, hard links inside and across its children, sparse files, long
// chains) and flat (one folder of very many files). Sizes vary but follow a fixed
// pattern, so every run makes the same tree.
#include <QByteArray>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace generated {

// A file of `bytes` bytes of data.
inline void writeFile(const QByteArray& path, int bytes) {
    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) {
        std::perror(path.constData());
        return;
    }
    static const std::vector<char> data(1 << 16, 'x');
    while (bytes > 0) {
        const ssize_t n = write(fd, data.data(), size_t(std::min<int>(bytes, int(data.size()))));
        if (n <= 0)
            break;
        bytes -= int(n);
    }
    close(fd);
}

inline QByteArray makeFolder(const QByteArray& path) {
    if (mkdir(path.constData(), 0755) != 0)
        std::perror(path.constData());
    return path;
}

// `subfolders` folders of `files` files each.
inline QByteArray wideTree(const QByteArray& base, int subfolders, int files = 5) {
    const QByteArray folder = makeFolder(base + "/wide" + QByteArray::number(subfolders));
    for (int i = 0; i < subfolders; ++i) {
        const QByteArray item = makeFolder(folder + "/item" + QByteArray::number(i));
        for (int j = 0; j < files; ++j)
            writeFile(item + "/f" + QByteArray::number(j), ((i + j) * 104729) % 20000);
    }
    return folder;
}

// `files` files in one folder.
inline QByteArray flatFolder(const QByteArray& base, int files) {
    const QByteArray folder = makeFolder(base + "/flat" + QByteArray::number(files));
    for (int i = 0; i < files; ++i)
        writeFile(folder + "/item" + QByteArray::number(i), (i * 7919) % 9000);
    return folder;
}

// `files` empty files in one folder: for what the names and entries cost, not the data.
inline QByteArray flatEmptyFolder(const QByteArray& base, int files) {
    const QByteArray folder = makeFolder(base + "/flatempty" + QByteArray::number(files));
    for (int i = 0; i < files; ++i) {
        const QByteArray path = folder + "/item" + QByteArray::number(i);
        const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (fd >= 0)
            close(fd);
    }
    return folder;
}

// A tree whose entries are concentrated down one path, as a full home folder often is:
// each of `levels` levels holds `folders` folders of `files` files and one folder
// "deeper", the next level, which so holds most of what the level above holds. One
// file in 50 has data, the others are empty, so the tree costs little disk.
inline QByteArray concentratedTree(const QByteArray& base, int levels = 6, int folders = 80,
                                   int files = 2000) {
    const QByteArray top = makeFolder(base + "/concentrated");
    QByteArray level = top;
    for (int depth = 0; depth < levels; ++depth) {
        for (int i = 0; i < folders; ++i) {
            const QByteArray folder = makeFolder(level + "/d" + QByteArray::number(i));
            for (int j = 0; j < files; ++j) {
                const QByteArray path = folder + "/f" + QByteArray::number(j);
                if (j % 50 == 0) {
                    writeFile(path, 3000 + ((i * 31 + j) % 7) * 4096);
                } else {
                    const int fd = open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
                    if (fd >= 0)
                        close(fd);
                }
            }
        }
        level = makeFolder(level + "/deeper");
    }
    return top;
}

namespace detail {

class DeepTree {
public:
    explicit DeepTree(uint64_t seed) : state(seed) {}

    // Fills `folder` with about `budget` entries: some files here, the rest spread very
    // unevenly over a few subfolders; twelve levels down, all of them files.
    void fill(const QByteArray& folder, int budget, int depth) {
        const int files = depth >= 12 ? budget : std::min(budget, 3 + int(next() % 14));
        for (int i = 0; i < files; ++i)
            addFile(folder + "/f" + QByteArray::number(i));
        budget -= files;
        if (budget <= 0)
            return;
        const int subfolders = std::min(budget, 2 + int(next() % 6));
        std::vector<uint64_t> weights(size_t(subfolders), 0);
        uint64_t sum = 0;
        for (uint64_t& weight : weights)
            sum += weight = 1 + (next() % 100) * (next() % 100);
        // What rounding leaves over goes to the first subfolder, so the count comes out.
        const int rest = budget - subfolders;
        std::vector<int> shares;
        int given = 0;
        for (uint64_t weight : weights)
            given += shares.emplace_back(int(uint64_t(rest) * weight / sum));
        shares[0] += rest - given;
        for (int i = 0; i < subfolders; ++i) {
            const QByteArray sub = makeFolder(folder + "/d" + QByteArray::number(i));
            ++made;
            fill(sub, shares[size_t(i)], depth + 1);
        }
    }

    // `depth` folders inside each other, a file in each.
    void chain(QByteArray folder, int depth) {
        for (int i = 0; i < depth; ++i) {
            folder = makeFolder(folder + "/level" + QByteArray::number(i));
            addFile(folder + "/f");
            ++made;
        }
    }

    // A file in another child of the tree's top, linked from every child that follows.
    QByteArray sharedTarget;
    // Hard links to a file of the same child, from further down.
    QByteArray childTarget;
    int made = 0;

private:
    void addFile(const QByteArray& path) {
        ++made;
        if (made % 997 == 0 && !childTarget.isEmpty()) {
            link(childTarget.constData(), path.constData());
        } else if (made % 1999 == 0 && !sharedTarget.isEmpty()) {
            link(sharedTarget.constData(), path.constData());
        } else if (made % 3001 == 0) {
            // Sparse: 16 MiB long, a few KiB allocated.
            writeFile(path, 4096);
            truncate(path.constData(), 16 << 20);
        } else {
            writeFile(path, int(next() % 24000));
            if (childTarget.isEmpty())
                childTarget = path;
        }
    }
    uint64_t next() {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        return state >> 33;
    }
    uint64_t state;
};

} // namespace detail

// About `entries` entries under 20 child folders of very uneven size and 4 files, with
// hard links inside and across the children, sparse files and two chains 250 deep.
inline QByteArray deepTree(const QByteArray& base, int entries = 350000) {
    const QByteArray folder = makeFolder(base + "/deep" + QByteArray::number(entries));
    detail::DeepTree tree(12345);
    const int children = 20;
    const double weights[children] = {30, 18,  12,  9, 7,   5.5, 4.5, 3.5, 3,   2.5,
                                      2,  1.6, 1.3, 1, 0.8, 0.6, 0.4, 0.3, 0.2, 0.1};
    double sum = 0;
    for (double weight : weights)
        sum += weight;
    for (int i = 0; i < children; ++i) {
        const QByteArray child = makeFolder(folder + "/child" + QByteArray::number(i));
        tree.childTarget.clear();
        if (i == 5 || i == 13)
            tree.chain(child, 250);
        tree.fill(child, int((entries - 600) * weights[i] / sum), 0);
        if (i == 0)
            tree.sharedTarget = tree.childTarget;
    }
    for (int i = 0; i < 4; ++i)
        writeFile(folder + "/top" + QByteArray::number(i), 100000 * (i + 1));
    return folder;
}

} // namespace generated
