#include "volumes/DriveIcon.h"

#include "ui/Style.h"

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

// Outside any namespace, as the macro requires. The resources sit in a static
// library, where nothing else would pull them in.
static bool registerDriveSymbols() {
    Q_INIT_RESOURCE(volumes);
    return true;
}

QPixmap driveIcon(bool internal, qreal devicePixelRatio) {
    [[maybe_unused]] static const bool registered = registerDriveSymbols();
    constexpr int side = 15;
    const int pixels = qRound(side * devicePixelRatio);
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer svg(internal ? QStringLiteral(":/volumes/internal-drive.svg")
                              : QStringLiteral(":/volumes/external-drive.svg"));
    QPainter painter(&image);
    svg.render(&painter);
    // The drawing gives the shape; the accent colour replaces its own.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), accentColor());
    painter.end();
    image.setDevicePixelRatio(devicePixelRatio);
    return QPixmap::fromImage(image);
}
