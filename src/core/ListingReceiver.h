// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include "core/MeasureEngine.h"
#include "platform/MainThreadInbox.h"
#include "platform/StopFlag.h"

#include <QPointer>

class SizeTree;

// Takes one folder's walk from the engine's threads to the controller on the main
// thread. What arrives once the listing is no longer wanted (discarded, another folder
// opened, the controller gone) is dropped there.
class ListingReceiver : public WalkReceiver {
public:
    ListingReceiver(std::shared_ptr<MainThreadInbox> inbox, QPointer<SizeTree> controller,
                    NodePtr folder, StopFlagPtr wanted);

    void folderIdentified(FileId id) override;
    void entriesListed(std::vector<WalkEntry>&& batch) override;
    void listingEnded(size_t count) override;
    void childMeasured(size_t index, qint64 bytes) override;
    void walkEnded(qint64 folderBytes) override;

private:
    // Runs apply(controller) on the main thread while the listing is wanted.
    void handOver(std::function<void(SizeTree&, const NodePtr&)> apply);

    const std::shared_ptr<MainThreadInbox> inbox;
    const QPointer<SizeTree> controller;
    const NodePtr folder;
    const StopFlagPtr wanted;
};
