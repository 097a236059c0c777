#pragma once

#include "platform/MainThreadInbox.h"
#include "core/MeasureEngine.h"
#include "core/Node.h"
#include "platform/StopFlag.h"
#include "text/Lang.h"

#include <QDeadlineTimer>
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
class FileActions;
struct ActionOutcome;
class TreeDisplay;
class TreeModel;
class TreeOutlineView;
class VolumeReader;
struct VolumeInfo;

// The one controller: owns the tree, the background queue, the main window and its
// views, the About and Preferences windows. Each subsystem defines its member
// functions in its own folder (core, ui, volumes, app, actions).
class AppController : public QObject {
    Q_OBJECT
public:
    explicit AppController(QObject* parent = nullptr);
    ~AppController() override;

    // --- size tree (src/core) ---
    // Lists an unlisted folder and measures its children, in one walk of its tree.
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
    FileActions* actions = nullptr;
    // What an action came to, in the status line or an alert, and the tree brought up to
    // date with the disk.
    void reportAction(const ActionOutcome& outcome);

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
    // A folder's listing walk arrives through its receiver, in this order: entries, the
    // end of the listing, then each child folder's size as its subtree is done, and the
    // folder's own total last.
    friend class ListingReceiver;
    void applyListedEntries(const NodePtr& folder, const std::vector<WalkEntry>& entries);
    void applyChildSize(const NodePtr& folder, size_t index, qint64 size);
    // Tells the display of the rows listed since the last time that are due: a small
    // level's at once; a large level's once it has grown enough or its rows have waited
    // long enough; a level's last rows when its listing has ended.
    // True when it told the display of any.
    bool announceNewRows();
    // Some listed rows are due to be announced. Rows held back get a look when their
    // time is up, even if no more results come.
    bool rowsDueForAnnouncement();
    // The folder's rows listed so far are announced next time, however few.
    void rowsDueNow(const Node& folder);
    void lookAtHeldRowsInTime();
    // The rows due are announced and laid out, in one pass of the event loop.
    void showDueRows();
    void applyListingEnd(const NodePtr& folder);
    void applyFolderTotal(const NodePtr& folder, qint64 size);
    // One of the folder's outstanding measurements (or its listing) is in: once none
    // is left, the level is sorted largest first over the event loop's next two turns.
    void settleOneMeasurement(const NodePtr& folder);
    // The folder's listing is still the one made under `wanted`.
    bool isCurrentListing(const NodePtr& folder, const StopFlagPtr& wanted) const;
    // Moves the level's children to their places, unless the listing they were
    // measured for is gone.
    void sortLevel(const NodePtr& folder, const StopFlagPtr& wanted,
                   const std::vector<int>& places);
    void applyRootTotal(const NodePtr& root);
    // Stops the folder's current listing walk and every walk of the listings below it.
    void dropListingWork(const Node& folder);
    // Stops every walk and measurement of the tree on screen.
    void dropTreeWork();
    void showVolumeRows(const QList<VolumeInfo>& volumes);
    bool isShown(const Node& node) const;

    // Stopped when the controller goes: no measurement starts after that, and the du
    // children still running are ended.
    const StopFlagPtr lifeFlag;
    // The work of the tree on screen; replaced, and the old one stopped, on every open.
    StopFlagPtr treeFlag;
    // Each listed folder's walk (none for the first millisecond), with the flag that
    // says whether its results are still wanted (stopped with the listing above it).
    struct Listing {
        StopFlagPtr wanted;
        std::shared_ptr<WalkTicket> walk;
    };
    QHash<const Node*, Listing> listings;
    // Measurements started by recompute, one per node at most.
    QHash<const Node*, Listing> remeasures;
    // Measures every size; its walks run on sizeQueue.
    std::unique_ptr<MeasureEngine> engine;
    // Brings the engine's results to the main thread in slices.
    const std::shared_ptr<MainThreadInbox> inbox;
    // Folders with rows listed but not yet announced, the first of those rows, and how
    // long they may still wait (none once the listing has ended).
    struct Unannounced {
        NodePtr folder;
        size_t first;
        QDeadlineTimer held;
    };
    std::vector<Unannounced> unannounced;
    bool isDue(const Unannounced& run) const;
    // A look at the rows held back is due.
    bool heldRowsTimed = false;
};
