#pragma once

#include <QFont>

// The desktop's interface font at a given size and weight.
QFont systemFont(qreal points, QFont::Weight weight = QFont::Normal);
