// Until the window arrives, the program prints a folder's first level, largest first.
#include "app/AppController.h"
#include "core/PathInfo.h"
#include "core/TreeDisplay.h"
#include "text/SizeText.h"

#include <QCoreApplication>
#include <cstdio>

namespace {

class QuitWhenSorted : public TreeDisplay {
public:
    explicit QuitWhenSorted(const NodePtr& root) : root(root) {}
    bool isShown(const Node&) const override { return false; }
    void redrawRow(const NodePtr&) override {}
    void redrawRowAndChildren(const NodePtr& node) override {
        if (node == root)
            QCoreApplication::quit();
    }

private:
    NodePtr root;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    Loc::current = AppController::defaultLang();
    if (argc < 2 || !isExistingDirectory(argv[1])) {
        std::fprintf(stderr, "usage: sizeloom FOLDER\n");
        return 2;
    }
    AppController controller;
    controller.rootNode = Node::make(absolutePath(argv[1]), true);
    QuitWhenSorted display(controller.rootNode);
    controller.display = &display;
    controller.ensureListed(controller.rootNode);
    if (!controller.rootNode->children->empty())
        app.exec();
    for (const NodePtr& child : *controller.rootNode->children)
        std::printf("%12s  %s%s\n", humanSize(child->size).toUtf8().constData(),
                    child->url.constData(), child->isDir ? "/" : "");
    return 0;
}
