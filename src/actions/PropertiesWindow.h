// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/ItemRef.h"
#include "platform/ItemFacts.h"

#include <QDialog>
#include <QHash>
#include <atomic>
#include <memory>
#include <optional>

class QFormLayout;
class QLabel;

// Sizeloom's own properties window for an item, for desktops whose file manager
// offers none: path, type, size on disk and apparent size, the number of items in a
// folder, the three times, owner, group, permissions, and where a symbolic link
// points. Everything is read on workers; a folder's contents are counted in the
// background, and the count stops when the window closes. Names and paths show as
// plain text, exactly as the file system has them (bytes that are not UTF-8 as U+FFFD).
class PropertiesWindow : public QDialog {
    Q_OBJECT
public:
    PropertiesWindow(const ItemRef& node, QObject* owner);
    ~PropertiesWindow() override;

    // Every label and value in the current language.
    void retranslate();

    // The fields in order, as their title keys.
    enum Field {
        Path,
        Type,
        SizeOnDisk,
        ApparentSize,
        Items,
        Modified,
        Changed,
        Accessed,
        Owner,
        Group,
        Permissions,
        LinkTarget,
        FieldCount
    };
    // The value shown for a field; null when the item has no such field.
    QLabel* value(Field field) const { return values[field]; }

private:
    void addField(Field field);
    void showFacts(const ItemFacts& read, const QHash<QString, QString>& typeNames);

    const ItemRef item;
    QFormLayout* form = nullptr;
    QLabel* titles[FieldCount] = {};
    QLabel* values[FieldCount] = {};
    std::optional<ItemFacts> facts;
    QHash<QString, QString> typeNames;
    std::optional<FolderTally> tally;
    const std::shared_ptr<std::atomic<bool>> stopCounting = std::make_shared<std::atomic<bool>>();
};
