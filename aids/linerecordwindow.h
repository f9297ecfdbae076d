// The window of the line's log.
#pragma once

#include "aids/linerecordmodel.h"
#include "aids/linewatch.h"

#include <QTimer>
#include <QWidget>

#include <memory>

namespace Ui {
class LineRecordWindow;
}

/// Shows the log of the open link, of the last one, or a recording from a file. Sends nothing; writes a file
/// only when the user saves.
class LineRecordWindow final : public QWidget {
    Q_OBJECT

public:
    /// The watch outlives the window.
    LineRecordWindow(QWidget* parent, LineWatch* watch);
    ~LineRecordWindow() override;

private:
    void connectControls();
    void addCopyActions();
    /// Rows selected in the order of time.
    [[nodiscard]] QList<int> selectedRows() const;

    void refresh();
    void setFollowing(bool following);
    void scrollToNewest();
    void applyFilter();
    void showTitle();
    void showSummary();
    void showCurrentRow();
    void enableButtons();

    void copyText();
    void copyHex();
    void chooseSaveFile();
    void save(const QString& path);
    void showSaved(const QString& path);
    void chooseRecording();
    void openRecording(const QString& path);
    void showLive();
    void tell(const QString& text, const QString& details);

    std::unique_ptr<Ui::LineRecordWindow> m_ui;
    LineWatch* m_watch;
    LineRecordModel* m_model;
    QString m_file; ///< of the recording that is shown; empty: the line
    QTimer m_timer;
    QTimer m_filterPause;
    QTimer m_savedNotice; ///< active: the summary's label tells where the recording was saved
};
