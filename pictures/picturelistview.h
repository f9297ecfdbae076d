// The rows of a picture list and the line below them.
#pragma once

#include <QCoreApplication>
#include <QListView>

/// Says what to do while it is empty; its menu opens at the current row when a key asks for it. It stays of
/// Qt's class for screen readers. A font that is too large for a row is made smaller.
class PictureListView final : public QListView {
    Q_DECLARE_TR_FUNCTIONS(PictureListView)

public:
    explicit PictureListView(QWidget* parent = nullptr);

    /// Qt opens a menu asked for by a key at the middle of the "cursor rectangle".
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A line of text beside the header's labels, which are the only labels of the window.
class PictureListSummary final : public QWidget {
public:
    using QWidget::QWidget;

    /// Also the accessible name.
    void setText(const QString& text);
    [[nodiscard]] QString text() const { return accessibleName(); }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};
