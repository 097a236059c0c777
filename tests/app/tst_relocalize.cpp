#include "app/AppController.h"
#include "app/VolumeRowsProbe.h"
#include "ui/TreeModel.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QVBoxLayout>

namespace {

// The main window's translated views, made by hand.
void makeWindowViews(AppController& c) {
    c.window = new QMainWindow;
    auto* central = new QWidget(c.window);
    auto* layout = new QVBoxLayout(central);
    c.pathField = new QLineEdit(central);
    c.upButton = new QPushButton(central);
    c.topBrowse = new QPushButton(central);
    c.emptyBrowse = new QPushButton(central);
    c.emptyTitle = new QLabel(central);
    c.model = new TreeModel(&c, central);
    c.status = new QLabel(QStringLiteral("untouched"), central);
    c.volHeaderLabel = new QLabel(central);
    c.grantButton = new QPushButton(central);
    for (QWidget* w :
         std::initializer_list<QWidget*>{c.pathField, c.upButton, c.topBrowse, c.emptyBrowse,
                                         c.emptyTitle, c.status, c.volHeaderLabel, c.grantButton})
        layout->addWidget(w);
    c.window->setCentralWidget(central);
}

} // namespace

class TestRelocalize : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { Loc::current = Lang::en; }

    void everyTextFollows_data() {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QStringList>("texts");
        // placeholder, up tool tip, choose folder, drop title, columns, status,
        // volumes header, grant, edit menu
        QTest::newRow("de") << "de"
                            << QStringList{"Ordnerpfad einfügen oder Ordner ins Fenster ziehen",
                                           "Übergeordneter Ordner",
                                           "Ordner wählen…",
                                           "Ordner hierher ziehen",
                                           "Name|Größe|Anteil (am Ordner)",
                                           "Ordner wählen  ·  Doppelklick = Im Finder zeigen  ·  "
                                           "Rechtsklick = Menü",
                                           "Speicher",
                                           "Vollständiger Festplattenzugriff…",
                                           "Bearbeiten"};
        QTest::newRow("ko") << "ko"
                            << QStringList{"폴더 경로를 붙여넣거나, 폴더를 끌어다 놓으세요",
                                           "상위 폴더로",
                                           "폴더 찾기…",
                                           "여기에 폴더를 끌어다 놓으세요",
                                           "이름|용량|비율 (상위 폴더 대비)",
                                           "폴더를 지정하세요  ·  더블클릭 = Finder에서 보기  ·  "
                                           "우클릭 = 메뉴",
                                           "저장장치",
                                           "전체 디스크 접근…",
                                           "편집"};
    }
    void everyTextFollows() {
        QFETCH(QString, lang);
        QFETCH(QStringList, texts);
        AppController c;
        makeWindowViews(c);
        QPointer<QLabel> oldRow = giveVolumesListAnOldRow(c, c.window);
        c.relocalize();
        QCOMPARE(c.pathField->placeholderText(), QStringLiteral("Paste a folder path, or drag a "
                                                                "folder into the window"));
        QSignalSpy headers(c.model, &QAbstractItemModel::headerDataChanged);
        QVERIFY(oldRow.isNull());
        oldRow = giveVolumesListAnOldRow(c, c.window);

        c.langRadioChanged(*LangInfo::fromRawValue(lang));

        QCOMPARE(c.pathField->placeholderText(), texts[0]);
        QCOMPARE(c.upButton->toolTip(), texts[1]);
        QCOMPARE(c.upButton->accessibleName(), texts[1]);
        QCOMPARE(c.topBrowse->text(), texts[2]);
        QCOMPARE(c.emptyBrowse->text(), texts[2]);
        // Still accent buttons.
        QVERIFY(c.topBrowse->styleSheet().contains(QStringLiteral("background-color")));
        QVERIFY(c.emptyBrowse->styleSheet().contains(QStringLiteral("background-color")));
        QCOMPARE(c.emptyTitle->text(), texts[3]);
        QCOMPARE(headers.size(), 1);
        QCOMPARE(headers[0][0].value<Qt::Orientation>(), Qt::Horizontal);
        QCOMPARE(headers[0][1].toInt(), 0);
        QCOMPARE(headers[0][2].toInt(), 2);
        QStringList columnTitles;
        for (int i = 0; i < 3; ++i)
            columnTitles << c.model->headerData(i, Qt::Horizontal, Qt::DisplayRole).toString();
        QCOMPARE(columnTitles.join(u'|'), texts[4]);
        QCOMPARE(c.status->text(), texts[5]);
        QCOMPARE(c.volHeaderLabel->text(), texts[6]);
        QCOMPARE(c.grantButton->text(), texts[7]);
        QVERIFY(oldRow.isNull());
        QCOMPARE(c.window->menuBar(), c.mainMenu);
        QCOMPARE(c.mainMenu->actions().at(1)->menu()->title(), texts[8]);
        delete c.window;
    }

    void statusLine_data() {
        QTest::addColumn<bool>("open");
        QTest::addColumn<bool>("listed");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("line");
        QTest::newRow("no folder")
            << false << false << qint64(-1)
            << "Выберите папку  ·  Двойной клик = Показать в Finder  ·  Правый клик = Меню";
        QTest::newRow("measured") << true << true << qint64(2048)
                                  << "/srv/data  ·  2 объектов  ·  Всего 2.0 KB";
        QTest::newRow("listed, total still unknown")
            << true << true << qint64(-1) << "/srv/data  ·  2 объектов  ·  Всего Вычисление…";
        // Nothing to rebuild yet: the old language stays until the line is next written.
        QTest::newRow("not listed yet") << true << false << qint64(-1) << "untouched";
    }
    void statusLine() {
        QFETCH(bool, open);
        QFETCH(bool, listed);
        QFETCH(qint64, size);
        QFETCH(QString, line);
        AppController c;
        c.status = new QLabel(QStringLiteral("untouched"));
        if (open) {
            c.rootNode = Node::make("/srv/data", true);
            c.rootNode->size = size;
            if (listed)
                c.rootNode->children = NodeList{Node::make("/srv/data/a", false, c.rootNode),
                                                Node::make("/srv/data/b", true, c.rootNode)};
        }
        c.langRadioChanged(Lang::ru);
        QCOMPARE(c.status->text(), line);
        delete c.status;
    }

    // Before the window exists only the menu and the Preferences window follow.
    void withoutTheWindow() {
        AppController c;
        QWidget panel;
        QPointer<QLabel> oldRow = giveVolumesListAnOldRow(c, &panel);
        c.showPrefs();
        c.langRadioChanged(Lang::zh);
        QCOMPARE(c.prefsWindow->windowTitle(), QStringLiteral("偏好设置"));
        QCOMPARE(c.prefsLangLabel->text(), QStringLiteral("语言"));
        QVERIFY(c.mainMenu);
        QCOMPARE(c.mainMenu->actions().at(1)->menu()->title(), QStringLiteral("编辑"));
        QVERIFY(oldRow.isNull());
    }
};

QTEST_MAIN(TestRelocalize)
#include "tst_relocalize.moc"
