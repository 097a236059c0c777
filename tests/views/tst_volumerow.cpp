// SPDX-License-Identifier: GPL-2.0-or-later
#include "text/Lang.h"
#include "ui/Style.h"
#include "views/CapacityText.h"
#include "views/DriveIcon.h"
#include "views/VolumeBar.h"
#include "views/VolumeRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>

namespace {

bool isAccent(QColor color) {
    const QColor accent = accentColor();
    return std::abs(color.red() - accent.red()) <= 24 &&
           std::abs(color.green() - accent.green()) <= 24 &&
           std::abs(color.blue() - accent.blue()) <= 24 && color.alpha() > 230;
}

// How many pixels of the bar's middle line are painted in the accent colour.
int accentPixelsOnMiddleLine(const QImage& image) {
    int count = 0;
    for (int x = 0; x < image.width(); ++x)
        count += isAccent(image.pixelColor(x, image.height() / 2));
    return count;
}

// The runs of a rich-text label as a document lays its text out.
AttributedText shownRuns(const QString& html) {
    QTextDocument document;
    document.setHtml(html);
    AttributedText runs;
    for (QTextBlock::iterator it = document.begin().begin(); !it.atEnd(); ++it) {
        const QTextCharFormat format = it.fragment().charFormat();
        runs << TextRun{it.fragment().text(), QColor::fromRgba(format.foreground().color().rgba()),
                        QFont::Weight(format.fontWeight())};
    }
    return runs;
}

} // namespace

class TestVolumeRow : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { Loc::current = Lang::en; }

    void capacityText_data() {
        QTest::addColumn<Lang>("lang");
        QTest::addColumn<QString>("freeText");
        QTest::addColumn<QString>("totalText");
        QTest::newRow("en") << Lang::en << "Free 42.5 GB"
                            << "  /  Total 500 GB";
        QTest::newRow("ko keeps the unit") << Lang::ko << "남은 42.5 GB"
                                           << "  /  전체 500 GB";
    }
    void capacityText() {
        QFETCH(Lang, lang);
        QFETCH(QString, freeText);
        QFETCH(QString, totalText);
        Loc::current = lang;
        AttributedText runs{{freeText, accentColor(), QFont::DemiBold},
                            {totalText, secondaryTextColor(), QFont::Normal}};
        QCOMPARE(capAttr(42'500'000'000, 500'000'000'000), runs);
        // The label shows each run with its colour and weight, blanks and markup as they are.
        runs << TextRun{"<b>&  x", Qt::black, QFont::Normal};
        for (TextRun& run : runs) // as 8-bit channels, the precision of rich text
            run.color = QColor::fromRgba(run.color.rgba());
        QCOMPARE(shownRuns(richText(runs)), runs);
    }

    void rowHoldsIconNameBarAndCapacity_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<double>("fraction");
        QTest::newRow("a quarter free") << "Data" << qint64(100'000'000'000) << 0.25;
        // A label is the file system's own text: markup in it is shown, not obeyed.
        QTest::newRow("markup in the name") << "<h1>D&amp;" << qint64(10) << 0.5;
        QTest::newRow("empty volume") << "Data" << qint64(0) << 0.0;
        QTest::newRow("long name cut at the end") << QString(200, u'W') << qint64(1) << 1.0;
    }
    void rowHoldsIconNameBarAndCapacity() {
        QFETCH(QString, name);
        QFETCH(qint64, total);
        QFETCH(double, fraction);
        const qint64 free = qint64(double(total) * fraction);
        std::unique_ptr<QWidget> row(makeVolumeRow(name, free, total, true));
        // The icon, the name and the capacity, with the bar between the last two.
        const QList<QLabel*> labels = row->findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
        auto* bar = row->findChild<VolumeBar*>();
        QVERIFY(labels.size() == 3 && bar && row->layout()->indexOf(bar) == 2);
        QLabel *icon = labels[0], *label = labels[1], *capacity = labels[2];
        QCOMPARE(icon->pixmap().toImage(), driveIcon(true, icon->devicePixelRatioF()).toImage());
        QCOMPARE(bar->fraction(), fraction);
        QCOMPARE(capacity->text(), richText(capAttr(free, total)));
        QCOMPARE(label->textFormat(), Qt::PlainText);
        if (name.size() < 100)
            QCOMPARE(label->text(), name);
        else
            QVERIFY(label->text().endsWith(QChar(0x2026)) &&
                    label->fontMetrics().horizontalAdvance(label->text()) <= label->width());
    }

    void driveIcons_data() {
        QTest::addColumn<bool>("internal");
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("internal") << true << 1.0;
        QTest::newRow("external, dense screen") << false << 3.0;
    }
    void driveIcons() {
        QFETCH(bool, internal);
        QFETCH(qreal, ratio);
        const QPixmap icon = driveIcon(internal, ratio);
        QCOMPARE(icon.size(), QSize(qRound(15 * ratio), qRound(15 * ratio)));
        // Every pixel drawn is the accent colour, at whatever coverage.
        const QImage image = icon.toImage().convertToFormat(QImage::Format_ARGB32);
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (const QColor color = image.pixelColor(x, y); color.alpha() >= 250) {
                    ++opaque;
                    QVERIFY(isAccent(color));
                }
        QVERIFY(opaque > image.width());
        QVERIFY(icon.toImage() != driveIcon(!internal, ratio).toImage());
    }

    void barFill_data() {
        QTest::addColumn<int>("width");
        QTest::addColumn<qreal>("fraction");
        QTest::addColumn<int>("filled");
        QTest::newRow("free = total") << 200 << 1.0 << 200;
        QTest::newRow("half") << 200 << 0.5 << 100;
        QTest::newRow("exactly half a point") << 100 << 0.005 << 0;
        QTest::newRow("just over half a point, drawn as high as the bar") << 100 << 0.006 << 7;
        QTest::newRow("more than whole") << 200 << 1.7 << 200;
        QTest::newRow("negative") << 200 << -0.3 << 0;
    }
    void barFill() {
        QFETCH(int, width);
        QFETCH(qreal, fraction);
        QFETCH(int, filled);
        VolumeBar bar;
        bar.resize(width, 7);
        bar.setFraction(fraction);
        const QImage image = bar.grab().toImage();
        const int accent = accentPixelsOnMiddleLine(image);
        QVERIFY2(std::abs(accent - filled) <= 1, qPrintable(QString::number(accent)));
        // The track shows where the fill does not reach: not the background around
        // the pill (a corner) and not the accent.
        if (filled < width - 10) {
            const QColor track = image.pixelColor(width - 5, 3);
            QVERIFY(!isAccent(track) && track != image.pixelColor(0, 0));
        }
    }
};

QTEST_MAIN(TestVolumeRow)
#include "tst_volumerow.moc"
