#include "drawing/ProgramIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace tidemark {

QIcon programIcon() {
    QSvgRenderer drawing(QStringLiteral(":/icons/com.tidemark.Tidemark.svg"));
    QIcon icon;
    for (const int side : {16, 32, 48, 128}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace tidemark
