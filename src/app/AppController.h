#pragma once

#include "core/Node.h"
#include "core/StopFlag.h"
#include "text/Lang.h"

#include <QHash>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>
#include <functional>

class QAbstractScrollArea;
class QLabel;
class QLineEdit;
class QMainWindow;
class QMenu;
class QMenuBar;
class QPushButton;
class QRadioButton;
class QWidget;
class TreeDisplay;
class TreeModel;
class TreeOutlineView;
class VolumeReader;
struct VolumeInfo;

// The one controller: owns the tree, the background queue, the main window and its
// views, the About and Preferences windows. Each subsystem defines its member
// functions in its own folder (core, ui, volumes, app).
class AppController : public QObject {
    Q_OBJECT
public:
    explicit AppController(QObject* parent = nullptr);
    ~AppController() override;

    // --- size tree (src/core) ---
    // Lists an unlisted folder and queues one measurement per child.
    void ensureListed(const NodePtr& node);
    // Makes the folder the root of a new tree and starts measuring it.
    void openPath(const QByteArray& path);
    // Re-measures the node, then each ancestor in turn up to the root.
    void recompute(const NodePtr& node);
    // After a change on disk: lists the node's folder afresh and re-measures it upwards.
    void refreshParent(const NodePtr& node);

    NodePtr rootNode;
    // Runs every measurement; at most six at once.
    QThreadPool* const sizeQueue;
    // Whatever shows the tree; the outline's model once the window is built.
    TreeDisplay* display = nullptr;

    // --- languages (src/text) ---
    // The stored choice when valid, else the user's first preferred language.
    static Lang defaultLang();

    // --- main window (src/ui) ---
    void buildWindow();
    QWidget* makeEmptyState();
    void setEmpty(bool empty);
    void colorizeTitle();
    // A path handed in by the person or the desktop: made absolute, opened when it is a
    // folder, else answered in the status line with the tree left as it was.
    void openHandedPath(const QByteArray& path);
    void pathEntered();
    void browseClicked();
    void goUp();
    // Launch: the first command-line argument, when it is an existing folder.
    void applicationDidFinishLaunching(const QList<QByteArray>& arguments);
    // Items handed over by the desktop: the first one is opened.
    void applicationOpen(const QList<QUrl>& urls);

    QMainWindow* window = nullptr;
    TreeOutlineView* outline = nullptr;
    TreeModel* model = nullptr;
    QLineEdit* pathField = nullptr;
    QLabel* status = nullptr;
    QPushButton* upButton = nullptr;
    QWidget* emptyState = nullptr;
    QWidget* topBar = nullptr;
    QAbstractScrollArea* scroll = nullptr;
    QPushButton* topBrowse = nullptr;
    QPushButton* emptyBrowse = nullptr;
    QLabel* emptyTitle = nullptr;
    QLabel* credit = nullptr;

    // --- volumes panel (src/volumes) ---
    // Builds the panel's views (header, grant button, list); buildWindow places it.
    QWidget* makeVolumesPanel();
    // Lists the volumes again; the rows follow once the volumes have answered.
    void refreshVolumes();
    void volumesChanged();
    void openFullDiskAccess();

    QWidget* volumesPanel = nullptr;
    QWidget* volumesList = nullptr;
    QLabel* volHeaderLabel = nullptr;
    QPushButton* grantButton = nullptr;
    VolumeReader* volumeReader = nullptr;

    // --- item actions (src/actions) ---
    // The menu for the row (counted from the top of the outline), or none; remembers
    // the row's node in menuNode.
    QMenu* buildContextMenu(int row);
    void revealDoubleClicked(const QModelIndex& index);
    void ctxReveal();
    void ctxQuickLook();
    void ctxGetInfo();
    void ctxRename();
    void ctxDuplicate();
    void ctxTrash();
    void ctxCopyFile();
    void ctxCopyPath();
    void ctxShare();
    void ctxCompress();

    // The node of the latest context menu; kept after the menu closes.
    NodePtr menuNode;

    // --- application shell (src/app) ---
    void buildMainMenu();
    void showAbout();
    void showPrefs();
    void langRadioChanged(Lang lang);
    void relocalize();

    QMenuBar* mainMenu = nullptr;
    QWidget* aboutWindow = nullptr;
    QWidget* prefsWindow = nullptr;
    QLabel* prefsLangLabel = nullptr;
    QList<QRadioButton*> langRadios;

private:
    // What to do on the main thread with a measured size; the controller is null
    // when it is gone by then.
    using SizeHandler = std::function<void(QPointer<AppController>, qint64)>;
    // On a worker: measures the node and hands the size to the main thread, unless the
    // work is no longer wanted by then.
    static void measureAndHandBack(QPointer<AppController> self, const NodePtr& node,
                                   const StopFlagPtr& wanted, const SizeHandler& apply);
    void applyChildSize(const NodePtr& child, const NodePtr& folder, qint64 size);
    void applyRootTotal(const NodePtr& root);
    // Runs computeSize on sizeQueue and hands the result back to the main thread.
    void measureInBackground(const NodePtr& node, const StopFlagPtr& wanted, SizeHandler apply);
    // Stops what is still queued or running for the folder's current listing.
    void dropListingWork(const Node& folder);
    void showVolumeRows(const QList<VolumeInfo>& volumes);
    bool isShown(const Node& node) const;

    // Stopped when the controller goes: no measurement starts after that, and the du
    // children still running are ended.
    const StopFlagPtr lifeFlag;
    // The work of the tree on screen; replaced, and the old one stopped, on every open.
    StopFlagPtr treeFlag;
    // The work of each folder's current listing and of the listings below it.
    QHash<const Node*, StopFlagPtr> listingFlags;
};
