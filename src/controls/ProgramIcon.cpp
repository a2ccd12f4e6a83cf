#include "controls/ProgramIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace tidemark {

using namespace Qt::StringLiterals;

QIcon programIcon() {
    QSvgRenderer drawing(u":/icons/com.tidemark.Tidemark.svg"_s);
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
