#pragma once

#include <QByteArray>
#include <QWidget>
#include <functional>

class QMimeData;

// The main window's content: takes a drop of files and hands on the first one.
class DropView : public QWidget {
    Q_OBJECT
public:
    explicit DropView(QWidget* parent = nullptr);

    std::function<void(const QByteArray& path)> onDrop;

    // The first local file among the dropped URLs, as path bytes; empty if none.
    static QByteArray firstLocalPath(const QMimeData& data);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};
