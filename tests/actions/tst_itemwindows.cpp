// SPDX-License-Identifier: GPL-2.0-or-later
// Sizeloom's own preview and properties windows on real files of every kind: what
// they read, what they show, in which language, and what a screen reader gets.
#include "TempTree.h"
#include "actions/PreviewContent.h"
#include "actions/PreviewWindow.h"
#include "actions/PropertiesWindow.h"
#include "platform/Paths.h"
#include "text/LangLocale.h"
#include "text/SizeText.h"

#include <QAccessible>
#include <QApplication>
#include <QFormLayout>
#include <QImage>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QStandardPaths>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace temptree;

namespace {

using Kind = PreviewContent::Kind;

QByteArray statField(const QByteArray& path, const char* format) {
    return runForOutput("/usr/bin/stat", {"-c", format, "--", path}).value_or("?").trimmed();
}

QStringList labelTexts(const QWidget* window) {
    QStringList texts;
    for (const QLabel* label : window->findChildren<QLabel*>())
        if (!label->text().isEmpty())
            texts << label->text();
    return texts;
}

} // namespace

class TestItemWindows : public QObject {
    Q_OBJECT
    Dir tmp;
    QByteArray folder;
    QObject owner;

    ItemRef node(const QByteArray& name, qint64 size = -1) {
        ItemRef made;
        made.path = join(folder, name);
        made.name = displayPath(name);
        struct stat st {};
        lstat(made.path.constData(), &st);
        made.isFolder = S_ISDIR(st.st_mode);
        made.size = size;
        return made;
    }

private Q_SLOTS:
    void initTestCase() {
        QStandardPaths::setTestModeEnabled(true);
        Loc::current = Lang::en;
        QVERIFY(tmp.isValid());
        folder = tmp.freshFolder();
        const auto write = [&](const QByteArray& name, const QByteArray& bytes) {
            writeBytes(join(folder, name), bytes);
        };
        write("notes.txt", "Hello, preview.\nSecond line: \xc3\xbc.\n");
        write("caf\xe9.txt", "text under a name that is not UTF-8\n");
        write("<b>bold<i> & \"q\" \\.txt", "markup stays text\n");
        write("binary.bin", QByteArray("\x01\x02\0\x03\xff", 5));
        write("empty", "");
        // A PDF made of plain ASCII is still a PDF; a script is text.
        write("plain.pdf", "%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\ntrailer << >>\n%%EOF\n");
        write("run.sh", "#!/bin/sh\necho hello\n");
        // Valid text up to the preview's limit, then a byte that is not UTF-8: only the
        // limit is read, so it reads as text.
        write("long.txt", QByteArray(kPreviewTextBytes, 'a') + "\xff\xfe rest");
        QImage big(1600, 1200, QImage::Format_RGB32);
        big.fill(Qt::darkCyan);
        QVERIFY(big.save(QFile::decodeName(join(folder, "big.png"))));
        QImage small(40, 30, QImage::Format_RGB32);
        small.fill(Qt::red);
        QVERIFY(small.save(QFile::decodeName(join(folder, "small.png"))));
        // A PNG's start on a file over the size cap: not decoded.
        write("huge.png", readRegular("small.png"));
        QCOMPARE(truncate(join(folder, "huge.png").constData(), kPreviewImageFileBytes + 1), 0);
        makeDir(join(folder, "sub"));
        writeFile(join(folder, "sub/inside"), 50000);
        QCOMPARE(mkfifo(join(folder, "pipe").constData(), 0600), 0);
        QCOMPARE(symlink("notes.txt", join(folder, "link").constData()), 0);
    }

    // What the preview reads of each kind of item. A FIFO is never opened (it would
    // block this test), nor anything through a symbolic link.
    void previewContent_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("mimeType");
        QTest::newRow("text") << QByteArray("notes.txt") << Kind::Text << "text/plain";
        QTest::newRow("text, name not UTF-8")
            << QByteArray("caf\xe9.txt") << Kind::Text << "text/plain";
        QTest::newRow("only the start of a long text")
            << QByteArray("long.txt") << Kind::Text << "text/plain";
        QTest::newRow("large image") << QByteArray("big.png") << Kind::Image << "image/png";
        QTest::newRow("small image") << QByteArray("small.png") << Kind::Image << "image/png";
        QTest::newRow("image over the cap")
            << QByteArray("huge.png") << Kind::Summary << "image/png";
        QTest::newRow("binary") << QByteArray("binary.bin") << Kind::Summary
                                << "application/octet-stream";
        QTest::newRow("empty") << QByteArray("empty") << Kind::Summary << "application/x-zerosize";
        QTest::newRow("PDF of plain ASCII")
            << QByteArray("plain.pdf") << Kind::Summary << "application/pdf";
        QTest::newRow("script") << QByteArray("run.sh") << Kind::Text
                                << "application/x-shellscript";
        QTest::newRow("folder") << QByteArray("sub") << Kind::Summary << "inode/directory";
        QTest::newRow("fifo") << QByteArray("pipe") << Kind::Summary << "inode/fifo";
        QTest::newRow("symbolic link") << QByteArray("link") << Kind::Summary << "inode/symlink";
    }
    void previewContent() {
        QFETCH(QByteArray, name);
        QFETCH(Kind, kind);
        QFETCH(QString, mimeType);
        const QSize fit(720, 540);
        const PreviewContent content = loadPreview(join(folder, name), fit);
        QCOMPARE(content.kind, kind);
        QCOMPARE(content.mimeType, mimeType);
        if (name == "notes.txt")
            QCOMPARE(content.text, QString::fromUtf8("Hello, preview.\nSecond line: ü.\n"));
        if (name == "long.txt")
            QCOMPARE(content.text, QString(kPreviewTextBytes, u'a'));
        if (name == "big.png")
            QCOMPARE(content.image.size(), QSize(720, 540));
        if (name == "small.png")
            QCOMPARE(content.image.size(), QSize(40, 30));
    }

    void looksLikeText_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("text");
        QTest::newRow("character cut at the end") << QByteArray("ok \xe2\x82") << true;
        QTest::newRow("Latin-1") << QByteArray("caf\xe9 au lait") << false;
        QTest::newRow("stray continuation") << QByteArray("\x80 abc") << false;
    }
    void looksLikeText() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, text);
        QCOMPARE(::looksLikeText(bytes), text);
    }

    // The window: titled with the name, the content once read, plain text throughout,
    // a name and text for a screen reader; Esc closes and deletes it.
    void previewWindow_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("shows");
        QTest::newRow("text") << QByteArray("notes.txt") << "text";
        QTest::newRow("image") << QByteArray("big.png") << "image";
        QTest::newRow("fifo") << QByteArray("pipe") << "Pipe";
        QTest::newRow("markup in the name") << QByteArray("<b>bold<i> & \"q\" \\.txt") << "text";
    }
    void previewWindow() {
        QFETCH(QByteArray, name);
        QFETCH(QString, shows);
        const ItemRef item = node(name, 123456);
        QPointer<PreviewWindow> window = new PreviewWindow(item, &owner);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->windowTitle(), displayPath(name));
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(window.data());
        QCOMPARE(reader->text(QAccessible::Name), displayPath(name));
        if (shows == "text") {
            QPlainTextEdit* text = nullptr;
            QTRY_VERIFY((text = window->findChild<QPlainTextEdit*>()) != nullptr);
            QVERIFY(text->isReadOnly());
            QCOMPARE(text->toPlainText(), QString::fromUtf8(readRegular(name)));
            QAccessibleInterface* textReader = QAccessible::queryAccessibleInterface(text);
            QCOMPARE(textReader->text(QAccessible::Name), displayPath(name));
            QCOMPARE(textReader->textInterface()->text(0, 5), text->toPlainText().left(5));
        } else if (shows == "image") {
            const auto shownImage = [&window]() -> QLabel* {
                for (QLabel* label : window->findChildren<QLabel*>())
                    if (!label->pixmap().isNull() && label->pixmap().size() == QSize(720, 540))
                        return label;
                return nullptr;
            };
            QTRY_VERIFY(shownImage());
            QLabel* image = shownImage();
            QCOMPARE(QAccessible::queryAccessibleInterface(image)->text(QAccessible::Name),
                     displayPath(name));
            QCOMPARE(QAccessible::queryAccessibleInterface(image)->text(QAccessible::Description),
                     QString("PNG image"));
        } else {
            // Icon, name, type and size.
            QTRY_COMPARE(labelTexts(window), (QStringList{displayPath(name), shows, "120.6 KB"}));
            for (const QLabel* label : window->findChildren<QLabel*>())
                QCOMPARE(label->textFormat(), Qt::PlainText);
        }
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTest::keyClick(window, Qt::Key_Escape);
        QTRY_VERIFY(window.isNull());
    }

    // Every field against stat, du and find, for each kind of item.
    void propertiesWindow_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("type");
        QTest::newRow("text") << QByteArray("notes.txt") << "Plain text document";
        QTest::newRow("name not UTF-8") << QByteArray("caf\xe9.txt") << "Plain text document";
        QTest::newRow("markup, quotes, backslash")
            << QByteArray("<b>bold<i> & \"q\" \\.txt") << "Plain text document";
        QTest::newRow("fifo") << QByteArray("pipe") << "Pipe";
        QTest::newRow("symbolic link") << QByteArray("link") << "Symbolic link";
    }
    void propertiesWindow() {
        QFETCH(QByteArray, name);
        QFETCH(QString, type);
        const QByteArray path = join(folder, name);
        const ItemRef item = node(name, 4096);
        auto* window = new PropertiesWindow(item, &owner);
        window->show();
        const auto value = [window](PropertiesWindow::Field field) {
            QLabel* label = window->value(field);
            return label ? label->text() : QString("(none)");
        };
        QTRY_COMPARE(value(PropertiesWindow::Type), type);
        QCOMPARE(window->windowTitle(), displayPath(name));
        QCOMPARE(value(PropertiesWindow::Path), displayPath(path));
        QCOMPARE(value(PropertiesWindow::Owner).toLatin1(), statField(path, "%U"));
        QCOMPARE(value(PropertiesWindow::Group).toLatin1(), statField(path, "%G"));
        QCOMPARE(value(PropertiesWindow::Permissions).toLatin1(),
                 statField(path, "%A") + "  (0" + statField(path, "%a") + ")");
        QCOMPARE(value(PropertiesWindow::Modified),
                 formatDateTime(QDateTime::fromSecsSinceEpoch(statField(path, "%Y").toLongLong()),
                                Lang::en));
        QCOMPARE(value(PropertiesWindow::LinkTarget),
                 name == "link" ? QString("notes.txt") : QString("(none)"));
        if (item.isFolder) {
            const auto du = [&](const char* option) {
                return runForOutput("/usr/bin/du", {"-s", option, path})
                    .value_or("")
                    .split('\t')
                    .first()
                    .toLongLong();
            };
            QTRY_COMPARE(value(PropertiesWindow::Items), QString("1"));
            QCOMPARE(value(PropertiesWindow::SizeOnDisk), humanSize(du("-B1")));
            QCOMPARE(value(PropertiesWindow::ApparentSize), humanSize(du("-b")));
        } else {
            QCOMPARE(value(PropertiesWindow::Items), QString("(none)"));
            QCOMPARE(value(PropertiesWindow::SizeOnDisk),
                     humanSize(statField(path, "%b").toLongLong() * 512));
            QCOMPARE(value(PropertiesWindow::ApparentSize),
                     humanSize(statField(path, "%s").toLongLong()));
        }
        for (const QLabel* label : window->findChildren<QLabel*>())
            QCOMPARE(label->textFormat(), Qt::PlainText);

        // A screen reader reads each value with its title, and the title as its label.
        QAccessibleInterface* pathReader =
            QAccessible::queryAccessibleInterface(window->value(PropertiesWindow::Path));
        QCOMPARE(pathReader->text(QAccessible::Name), displayPath(path));
        QCOMPARE(pathReader->text(QAccessible::Description), QString("Path"));
        const auto* form = window->findChild<QFormLayout*>();
        QWidget* title = form->labelForField(window->value(PropertiesWindow::Path));
        const auto labels = pathReader->relations(QAccessible::Label);
        QCOMPARE(labels.size(), 1);
        QCOMPARE(labels.first().first->object(), title);
        QCOMPARE(QAccessible::queryAccessibleInterface(window)->text(QAccessible::Name),
                 displayPath(name));
        delete window;
    }

    // A language switch re-sets the windows' titles, types, sizes and dates.
    void windowsFollowTheLanguage() {
        const timespec times[2] = {{1709643791, 0}, {1709643791, 0}};
        QCOMPARE(utimensat(AT_FDCWD, join(folder, "notes.txt").constData(), times, 0), 0);
        qputenv("TZ", "Europe/Berlin");
        tzset();
        const std::unique_ptr<PreviewWindow> preview(new PreviewWindow(node("sub", -1), &owner));
        preview->show();
        QTRY_COMPARE(labelTexts(preview.get()), (QStringList{"sub", "Folder", "Calculating…"}));
        const std::unique_ptr<PropertiesWindow> info(
            new PropertiesWindow(node("notes.txt"), &owner));
        const auto value = [&info](PropertiesWindow::Field field) {
            return info->value(field)->text();
        };
        QTRY_COMPARE(value(PropertiesWindow::Modified),
                     QString("Tuesday, March 5, 2024 2:03:11 PM CET"));
        QCOMPARE(value(PropertiesWindow::Type), QString("Plain text document"));
        Loc::current = Lang::de;
        preview->retranslate();
        info->retranslate();
        Loc::current = Lang::en;
        QCOMPARE(labelTexts(preview.get()), (QStringList{"sub", "Ordner", "Wird berechnet…"}));
        QCOMPARE(value(PropertiesWindow::Modified), QString("Dienstag, 5. März 2024 14:03:11 CET"));
        QCOMPARE(value(PropertiesWindow::Type), QString("Einfaches Textdokument"));
        const auto* title = qobject_cast<QLabel*>(
            info->findChild<QFormLayout*>()->labelForField(info->value(PropertiesWindow::Path)));
        QVERIFY(title);
        QCOMPARE(title->text(), QString("Pfad"));
    }

private:
    QByteArray readRegular(const QByteArray& name) {
        QFile file(QFile::decodeName(join(folder, name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

QTEST_MAIN(TestItemWindows)
#include "tst_itemwindows.moc"
