#include "dialogs/lineedits.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionFrame>

void pairWithButton(QLineEdit* edit, QAbstractButton* button) {
    QObject::connect(edit, &QLineEdit::returnPressed, button, &QAbstractButton::click);

    constexpr int textMargins =
        8; // pixels; left and right of the text inside the edit, the cursor among them
    const QSize text(edit->fontMetrics().horizontalAdvance(edit->placeholderText()) + textMargins,
                     edit->fontMetrics().height());
    QStyleOptionFrame frame;
    frame.initFrom(edit);
    edit->setMinimumWidth(edit->style()->sizeFromContents(QStyle::CT_LineEdit, &frame, text, edit).width());
}
