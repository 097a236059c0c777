// SPDX-License-Identifier: GPL-2.0-or-later
#include "core/ListingReceiver.h"

#include "core/SizeTree.h"

ListingReceiver::ListingReceiver(std::shared_ptr<MainThreadInbox> inbox,
                                 QPointer<SizeTree> controller, NodePtr folder, StopFlagPtr wanted)
    : inbox(std::move(inbox)), controller(std::move(controller)), folder(std::move(folder)),
      wanted(std::move(wanted)) {}

void ListingReceiver::handOver(std::function<void(SizeTree&, const NodePtr&)> apply) {
    if (wanted->isStopped())
        return;
    inbox->post(
        [controller = controller, folder = folder, wanted = wanted, apply = std::move(apply)] {
            // Checked again on arrival: the listing may be dropped while this waited.
            if (controller && !wanted->isStopped())
                apply(*controller, folder);
        });
}

void ListingReceiver::folderIdentified(FileId id) {
    handOver([id](SizeTree&, const NodePtr& folder) { folder->ownId = id; });
}

void ListingReceiver::entriesListed(std::vector<WalkEntry>&& batch) {
    handOver([batch = std::move(batch)](SizeTree& controller, const NodePtr& folder) {
        controller.applyListedEntries(folder, batch);
    });
}

void ListingReceiver::listingEnded(size_t) {
    handOver(
        [](SizeTree& controller, const NodePtr& folder) { controller.applyListingEnd(folder); });
}

void ListingReceiver::childMeasured(size_t index, qint64 bytes) {
    handOver([index, bytes](SizeTree& controller, const NodePtr& folder) {
        controller.applyChildSize(folder, index, bytes);
    });
}

void ListingReceiver::walkEnded(qint64 folderBytes) {
    handOver([folderBytes](SizeTree& controller, const NodePtr& folder) {
        controller.applyFolderTotal(folder, folderBytes);
    });
}
