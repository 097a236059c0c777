#pragma once

#include <QByteArray>

// The path of `name` inside `folder` ("/" + "a" is "/a", not "//a").
inline QByteArray childPath(const QByteArray& folder, const QByteArray& name) {
    return folder.endsWith('/') ? folder + name : folder + '/' + name;
}
