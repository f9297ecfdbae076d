#include "tests/looks/shownparts.h"

#include "app/panellabels.h"
#include "app/picturearea.h"
#include "app/portchoice.h"
#include "linkaccess/valuelabel.h"
#include "pictures/picturelistview.h"

#include <QtWidgets>

namespace looks {

namespace {

constexpr int buttonMargin = 2; // of a tool button's text
constexpr int editMargin = 2;   // of the text in a line edit, each side
constexpr int headerMargin = 2;
constexpr int mostRows = 3; // looked at of a list

QString toolTipOf(QWidget& widget) {
    if (dynamic_cast<ValueLabel*>(&widget) == nullptr && qobject_cast<PortChoice*>(&widget) == nullptr)
        return widget.toolTip();
    QHelpEvent event(QEvent::ToolTip, QPoint(), QPoint());
    QApplication::sendEvent(&widget, &event);
    const QString text = QToolTip::text();
    QToolTip::hideText();
    return text;
}

class TextFinder {
public:
    explicit TextFinder(QWidget& window) : m_window(window) {}

    void look(QWidget& widget) {
        if (auto* const label = qobject_cast<QLabel*>(&widget))
            lookAtLabel(*label);
        else if (auto* const button = qobject_cast<QAbstractButton*>(&widget))
            lookAtButton(*button);
        else if (auto* const edit = qobject_cast<QLineEdit*>(&widget))
            lookAtEdit(*edit);
        else if (auto* const choice = qobject_cast<QComboBox*>(&widget))
            lookAtChoice(*choice);
        else if (auto* const group = qobject_cast<QGroupBox*>(&widget))
            lookAtGroup(*group);
        else if (auto* const header = qobject_cast<QHeaderView*>(&widget))
            lookAtHeader(*header);
        else if (auto* const view = qobject_cast<QAbstractItemView*>(&widget))
            lookAtRows(*view);
        else if (auto* const summary = dynamic_cast<PictureListSummary*>(&widget))
            add(widget, summary->text(), widget.rect(), Qt::AlignLeft | Qt::AlignVCenter);
        else
            lookAtBar(widget);
    }

    std::vector<ShownText> found;

private:
    void add(QWidget& widget, const QString& text, const QRect& room, int flags) {
        if (text.isEmpty() || Qt::mightBeRichText(text))
            return;
        const QFontMetrics metrics = widget.fontMetrics();
        QSize needed = metrics
                           .boundingRect(QRect(room.topLeft(), QSize(room.width(), 10000)),
                                         flags & ~static_cast<int>(Qt::AlignVCenter | Qt::AlignBottom), text)
                           .size();
        const int ink = metrics.tightBoundingRect(text).height();
        const int lines = qMax(1, needed.height() / metrics.lineSpacing());
        needed.setHeight(lines == 1 ? ink : (lines - 1) * metrics.lineSpacing() + ink);
        const QRect place = metrics.boundingRect(room, flags, text) & room;
        const QPoint origin = widget.mapTo(&m_window, QPoint());
        found.push_back({nameOf(widget) + QStringLiteral(" \"") + text + u'"', text, room.translated(origin),
                         place.translated(origin), needed, toolTipOf(widget).contains(text),
                         widget.isEnabled()});
    }

    void lookAtLabel(QLabel& label) {
        const int wrap = label.wordWrap() ? Qt::TextWordWrap : 0;
        const int flags = static_cast<int>(label.alignment()) | wrap;
        const QRect room = label.contentsRect();
        if (const auto* const path = dynamic_cast<PathLabel*>(&label)) {
            const int half = room.height() / 2;
            add(label, path->property("caption").toString(), room.adjusted(0, 0, 0, -half), Qt::AlignTop);
            add(label, path->shownPath(), room.adjusted(0, half, 0, 0), Qt::AlignTop);
        } else if (const auto* const area = dynamic_cast<PictureArea*>(&label);
                   area != nullptr && !area->pixmap().isNull()) {
            const QString shown =
                label.fontMetrics().elidedText(area->caption(), Qt::ElideRight, room.width());
            const int line = label.fontMetrics().height();
            add(label, shown, room.adjusted(0, room.height() - line - 4, 0, 0), Qt::AlignCenter);
        } else if (label.text().isEmpty() && label.property("hint").isValid()) {
            add(label, label.property("hint").toString(), room, flags);
        } else {
            add(label, label.text(), room, flags);
        }
    }

    void lookAtButton(QAbstractButton& button) {
        const QStyle& style = *button.style();
        QRect room = button.rect().marginsRemoved({buttonMargin, buttonMargin, buttonMargin, buttonMargin});
        int flags = Qt::AlignCenter | Qt::TextShowMnemonic;
        QStyleOptionButton option;
        option.initFrom(&button);
        option.text = button.text();
        option.icon = button.icon();
        option.iconSize = button.iconSize();
        if (qobject_cast<QPushButton*>(&button) != nullptr) {
            room = style.subElementRect(QStyle::SE_PushButtonContents, &option, &button);
        } else if (qobject_cast<QCheckBox*>(&button) != nullptr) {
            room = style.subElementRect(QStyle::SE_CheckBoxContents, &option, &button);
            flags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic;
        } else if (qobject_cast<QRadioButton*>(&button) != nullptr) {
            room = style.subElementRect(QStyle::SE_RadioButtonContents, &option, &button);
            flags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextShowMnemonic;
        }
        if (!button.icon().isNull())
            room.setLeft(room.left() + button.iconSize().width() + 4);
        add(button, button.text(), room, flags);
    }

    void lookAtEdit(QLineEdit& edit) {
        QStyleOptionFrame option;
        option.initFrom(&edit);
        option.lineWidth = edit.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, &edit);
        QRect room = edit.style()->subElementRect(QStyle::SE_LineEditContents, &option, &edit);
        room = room.marginsRemoved(edit.textMargins()).adjusted(editMargin, 0, -editMargin, 0);
        if (edit.isClearButtonEnabled())
            room.setRight(room.right() - edit.style()->pixelMetric(QStyle::PM_SmallIconSize, &option, &edit) -
                          6);
        const int flags = static_cast<int>(edit.alignment() & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter;
        if (edit.text().isEmpty()) {
            add(edit, edit.placeholderText(), room, flags);
            return;
        }
        add(edit, edit.displayText(), room, flags);
        if (!found.empty() && !edit.isReadOnly())
            found.back().readableElsewhere = true; // typed texts scroll
    }

    void lookAtChoice(QComboBox& choice) {
        QStyleOptionComboBox option;
        option.initFrom(&choice);
        option.editable = choice.isEditable();
        const QRect room = choice.style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                          QStyle::SC_ComboBoxEditField, &choice);
        add(choice, choice.currentText(), room, Qt::AlignLeft | Qt::AlignVCenter);
    }

    void lookAtGroup(QGroupBox& group) {
        QStyleOptionGroupBox option;
        option.initFrom(&group);
        option.text = group.title();
        option.subControls = QStyle::SC_GroupBoxLabel | QStyle::SC_GroupBoxFrame;
        const QRect label =
            group.style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, &group);
        add(group, group.title(), QRect(0, label.top(), group.width(), label.height()),
            Qt::AlignLeft | Qt::AlignVCenter);
    }

    void lookAtHeader(QHeaderView& header) {
        for (int section = 0; section < header.count(); ++section) {
            const int left = header.sectionViewportPosition(section);
            const QRect whole(left, 0, header.sectionSize(section), header.height());
            if (header.orientation() != Qt::Horizontal || !header.rect().contains(whole))
                continue; // scrolled away
            add(header, header.model()->headerData(section, Qt::Horizontal).toString(),
                whole.adjusted(headerMargin, 0, -headerMargin, 0),
                static_cast<int>(header.defaultAlignment()));
        }
    }

    void lookAtRows(QAbstractItemView& view) {
        const QAbstractItemModel* const model = view.model();
        if (model == nullptr)
            return;
        if (model->rowCount() == 0 && dynamic_cast<PictureListView*>(&view) != nullptr)
            add(*view.viewport(), QStringLiteral("按“刷新列表”读取"), view.viewport()->rect(),
                Qt::AlignCenter);
        for (int row = 0; row < qMin(model->rowCount(), mostRows); ++row) {
            for (int column = 0; column < model->columnCount(); ++column)
                lookAtCell(view, model->index(row, column));
        }
    }

    /// Items end with an ellipsis where the column is narrow.
    void lookAtCell(QAbstractItemView& view, const QModelIndex& index) {
        const QRect room = view.visualRect(index);
        if (room.isEmpty() ||
            !view.viewport()->rect().contains(QRect(room.topLeft(), QSize(1, room.height()))))
            return; // scrolled away
        const std::size_t before = found.size();
        add(*view.viewport(), index.data().toString(), room, Qt::AlignLeft | Qt::AlignVCenter);
        if (found.size() == before)
            return;
        found.back().needed.setWidth(0);
        found.back().place = found.back().room; // beside a box or an icon
    }

    void lookAtBar(QWidget& widget) {
        if (auto* const status = qobject_cast<QStatusBar*>(&widget)) {
            int right = status->width();
            for (const QWidget* const child : status->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
                if (child->isVisible())
                    right = qMin(right, child->x());
            }
            add(widget, status->currentMessage(), QRect(6, 0, right - 6, status->height()),
                Qt::AlignLeft | Qt::AlignVCenter);
        } else if (auto* const bar = qobject_cast<QProgressBar*>(&widget); bar && bar->isTextVisible()) {
            add(widget, bar->text(), bar->rect(), Qt::AlignCenter);
        } else if (auto* const menu = qobject_cast<QMenu*>(&widget)) {
            lookAtEntries(*menu);
        } else if (auto* const menus = qobject_cast<QMenuBar*>(&widget)) {
            lookAtEntries(*menus);
        }
    }

    template <typename Menu>
    void lookAtEntries(Menu& menu) {
        for (QAction* const entry : menu.actions()) {
            const std::size_t before = found.size();
            if (!entry->isSeparator())
                add(menu, entry->text(), menu.actionGeometry(entry), Qt::AlignCenter | Qt::TextShowMnemonic);
            if (found.size() > before)
                found.back().enabled = entry->isEnabled();
        }
    }

    QWidget& m_window;
};

/// Not scrolled away or in a collapsed parent.
bool isInSight(const QWidget& widget) {
    QRect seen = widget.rect();
    const QWidget* each = &widget;
    for (; !each->isWindow() && !seen.isEmpty(); each = each->parentWidget())
        seen = seen.translated(each->pos()) & each->parentWidget()->rect();
    return widget.isVisible() && !seen.isEmpty();
}

bool hasBorder(const QWidget& widget) {
    if (const auto* const button = qobject_cast<const QPushButton*>(&widget))
        return !button->isFlat();
    if (const auto* const button = qobject_cast<const QToolButton*>(&widget))
        return !button->autoRaise() && qobject_cast<QLineEdit*>(button->parentWidget()) == nullptr;
    if (const auto* const edit = qobject_cast<const QLineEdit*>(&widget))
        return edit->hasFrame() && qobject_cast<QAbstractSpinBox*>(edit->parentWidget()) == nullptr;
    if (const auto* const area = qobject_cast<const QAbstractScrollArea*>(&widget))
        return area->frameShape() != QFrame::NoFrame;
    if (dynamic_cast<const PictureArea*>(&widget) != nullptr)
        return true;
    const bool isPanel =
        widget.metaObject() == &QFrame::staticMetaObject && widget.styleSheet().isEmpty() &&
        !widget.children().isEmpty() &&
        !widget.findChildren<QLabel*>(QRegularExpression(QStringLiteral("^heading_"))).isEmpty() &&
        widget.objectName() != QStringLiteral("frame_top") &&
        widget.objectName() != QStringLiteral("frame_bottom");
    return isPanel || qobject_cast<const QComboBox*>(&widget) != nullptr ||
           qobject_cast<const QProgressBar*>(&widget) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(&widget) != nullptr;
}

QRect outlineOf(const QWidget& widget) {
    QStyleOptionButton option;
    option.initFrom(&widget);
    if (qobject_cast<const QCheckBox*>(&widget) != nullptr)
        return widget.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &widget);
    if (qobject_cast<const QRadioButton*>(&widget) != nullptr &&
        !widget.property("text").toString().isEmpty())
        return widget.style()->subElementRect(QStyle::SE_RadioButtonIndicator, &option, &widget);
    return hasBorder(widget) ? widget.rect() : QRect();
}

} // namespace

QString nameOf(const QWidget& widget) {
    const QWidget* named = &widget;
    while (named->objectName().isEmpty() && named->parentWidget() != nullptr)
        named = named->parentWidget();
    return QString::fromLatin1(widget.metaObject()->className()) + u' ' + named->objectName();
}

std::vector<QWidget*> shownWidgets(QWidget& window) {
    std::vector<QWidget*> shown{&window};
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() == &window && isInSight(*widget))
            shown.push_back(widget);
    }
    return shown;
}

std::vector<ShownText> shownTexts(QWidget& window) {
    TextFinder finder(window);
    for (QWidget* const widget : shownWidgets(window))
        finder.look(*widget);
    return finder.found;
}

std::vector<ShownControl> shownControls(QWidget& window) {
    std::vector<ShownControl> controls;
    for (QWidget* const widget : shownWidgets(window)) {
        const QRect outline = outlineOf(*widget);
        if (widget->isEnabled() && !outline.isEmpty())
            controls.push_back({widget, nameOf(*widget), outline.translated(widget->mapTo(&window, QPoint())),
                                (widget->focusPolicy() & Qt::TabFocus) != 0});
    }
    return controls;
}

} // namespace looks
