// SPDX-License-Identifier: GPL-2.0-or-later
#include "actions/PropertiesWindow.h"

#include "actions/ItemWindowParts.h"
#include "platform/BackgroundJob.h"
#include "platform/MimeComments.h"
#include "platform/Paths.h"
#include "text/LangLocale.h"
#include "text/SizeText.h"
#include "ui/PlainText.h"
#include "ui/Style.h"
#include "ui/UiFont.h"

#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <sys/stat.h>

namespace {

constexpr const char* kTitleKeys[PropertiesWindow::FieldCount] = {
    "info_path",  "info_type",     "info_size_on_disk", "info_apparent_size",
    "info_items", "info_modified", "info_changed",      "info_accessed",
    "info_owner", "info_group",    "info_permissions",  "info_link_target"};

struct ReadFacts {
    ItemFacts facts;
    QHash<QString, QString> typeNames;
};

} // namespace

PropertiesWindow::PropertiesWindow(const ItemRef& node, QObject* owner) : item(node) {
    setUpItemWindow(this, node.name, owner);
    setMinimumWidth(460);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 18, 20, 18);
    column->setSpacing(14);
    auto* header = new QHBoxLayout;
    header->setSpacing(10);
    QLabel* icon = makePlainLabel(QString(), this);
    icon->setPixmap(iconForMimeType(node.isFolder ? QStringLiteral("inode/directory")
                                                  : QStringLiteral("application/octet-stream"))
                        .pixmap(QSize(48, 48)));
    header->addWidget(icon);
    QLabel* name = makePlainLabel(node.name, this);
    name->setFont(uiFont(15, QFont::DemiBold));
    name->setWordWrap(true);
    name->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    header->addWidget(name, 1);
    column->addLayout(header);

    form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
    form->setHorizontalSpacing(12);
    form->setVerticalSpacing(6);
    column->addLayout(form);
    column->addStretch(1);
    for (Field field : {Path, Type, SizeOnDisk, ApparentSize})
        addField(field);
    if (node.isFolder)
        addField(Items);
    for (Field field : {Modified, Changed, Accessed, Owner, Group, Permissions})
        addField(field);
    retranslate();

    runInBackground<ReadFacts>(
        this,
        [path = node.path] {
            ReadFacts read{readItemFacts(path), {}};
            read.typeNames = mimeComments(read.facts.mimeType);
            return read;
        },
        [this, icon](ReadFacts read) {
            icon->setPixmap(iconForMimeType(read.facts.mimeType).pixmap(QSize(48, 48)));
            showFacts(read.facts, read.typeNames);
        });
    if (node.isFolder)
        runInBackground<std::optional<FolderTally>>(
            this, [path = node.path, stop = stopCounting] { return tallyFolder(path, *stop); },
            [this](std::optional<FolderTally> counted) {
                tally = counted;
                retranslate();
            });
}

PropertiesWindow::~PropertiesWindow() {
    stopCounting->store(true);
}

void PropertiesWindow::addField(Field field) {
    titles[field] = makePlainLabel(QString(), this);
    setTextColor(titles[field], secondaryTextColor());
    values[field] = makePlainLabel(QString(), this);
    values[field]->setWordWrap(true);
    values[field]->setTextInteractionFlags(Qt::TextSelectableByMouse |
                                           Qt::TextSelectableByKeyboard);
    titles[field]->setBuddy(values[field]);
    form->addRow(titles[field], values[field]);
}

void PropertiesWindow::showFacts(const ItemFacts& read, const QHash<QString, QString>& names) {
    facts = read;
    typeNames = names;
    if (S_ISLNK(read.mode) && !values[LinkTarget])
        addField(LinkTarget);
    retranslate();
}

void PropertiesWindow::retranslate() {
    const QLocale locale = localeFor(Loc::current);
    const QString calculating = t(QStringLiteral("calculating"));
    QString texts[FieldCount];
    texts[Path] = displayPath(item.path);
    for (Field field : {Type, SizeOnDisk, ApparentSize, Items, Modified, Changed, Accessed, Owner,
                        Group, Permissions, LinkTarget})
        texts[field] = calculating;
    if (facts && !facts->found) {
        // The item is gone: only what the tree knew is left.
        for (Field field : {Type, SizeOnDisk, ApparentSize, Items, Modified, Changed, Accessed,
                            Owner, Group, Permissions, LinkTarget})
            texts[field].clear();
    } else if (facts) {
        texts[Type] = describeIn(typeNames, Loc::current);
        if (texts[Type].isEmpty())
            texts[Type] = facts->mimeType;
        if (!item.isFolder) {
            texts[SizeOnDisk] = humanSize(facts->allocatedBytes);
            texts[ApparentSize] = humanSize(facts->apparentBytes);
        }
        texts[Modified] = formatDateTime(facts->modified, Loc::current);
        texts[Changed] = formatDateTime(facts->changed, Loc::current);
        texts[Accessed] = formatDateTime(facts->accessed, Loc::current);
        texts[Owner] = facts->owner;
        texts[Group] = facts->group;
        texts[Permissions] = permissionText(facts->mode) + QStringLiteral("  (") +
                             QString::number(facts->mode & 07777, 8).rightJustified(4, u'0') +
                             QLatin1Char(')');
        texts[LinkTarget] = displayPath(facts->linkTarget);
    }
    if (item.isFolder && tally) {
        texts[SizeOnDisk] = humanSize(tally->allocatedBytes);
        texts[ApparentSize] = humanSize(tally->apparentBytes);
        texts[Items] = locale.toString(tally->items);
    }
    for (int field = 0; field < FieldCount; ++field) {
        if (!values[field])
            continue;
        titles[field]->setText(t(QLatin1String(kTitleKeys[field])));
        values[field]->setText(texts[field]);
        // A screen reader says the value, then what it is (the title is also its label).
        values[field]->setAccessibleDescription(titles[field]->text());
    }
}
