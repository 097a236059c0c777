// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <vector>

// A program and its arguments as exec wants them: NUL-terminated strings and a
// null-terminated array of pointers to them, all owned here. Built before a fork, so
// that the child only reads it.
class ArgumentVector {
public:
    ArgumentVector(const QByteArray& program, const QList<QByteArray>& args) : strings{program} {
        strings.insert(strings.end(), args.begin(), args.end());
        for (QByteArray& string : strings)
            pointers.push_back(string.data());
        pointers.push_back(nullptr);
    }
    ArgumentVector(const ArgumentVector&) = delete;
    ArgumentVector& operator=(const ArgumentVector&) = delete;

    char* const* data() const { return pointers.data(); }

private:
    std::vector<QByteArray> strings;
    std::vector<char*> pointers;
};
