#pragma once

#include "core/Node.h"
#include "text/Lang.h"

#include <QObject>
#include <QPointer>
#include <QThreadPool>

class TreeDisplay;

// The one controller: owns the tree, the background queue and (once built) the
// window. Each subsystem defines its member functions in its own folder.
class AppController : public QObject {
    Q_OBJECT
public:
    explicit AppController(QObject* parent = nullptr);
    ~AppController() override;

    // --- size tree (src/core) ---
    // Lists an unlisted folder and queues one measurement per child.
    void ensureListed(const NodePtr& node);

    NodePtr rootNode;
    // Runs every measurement; at most six at once.
    QThreadPool* const sizeQueue;
    // Whatever shows the tree; may be absent (nothing is drawn then).
    TreeDisplay* display = nullptr;

    // --- languages (src/text) ---
    // The stored choice when valid, else the user's first preferred language.
    static Lang defaultLang();

private:
    void applyChildSize(const NodePtr& child, const NodePtr& folder, qint64 size);
    // Runs work on sizeQueue and hands its result back to the main thread, where
    // apply runs with a weak controller (null when the controller is gone).
    void measureInBackground(const NodePtr& node,
                             std::function<void(QPointer<AppController>, qint64)> apply);
    bool isShown(const Node& node) const;
};
