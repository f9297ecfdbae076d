// A list window that is filled repeatedly.
#pragma once

#include "bench/records.h"
#include "pictures/piclistv1.h"
#include "pictures/piclistv1model.h"

#include <QAbstractItemView>
#include <QCoreApplication>

namespace bench {

/// A shown V1 list window. Needs a QApplication.
class FilledList {
public:
    FilledList() {
        m_window.show();
        QCoreApplication::processEvents();
    }
    void clear() {
        m_model->clear();
        QCoreApplication::processEvents();
    }
    void fill(const std::vector<protocol::RecordBytes>& records) { m_model->appendPictures(records); }
    /// At once, whenever the platform would have laid out and painted.
    void paint() {
        m_view->doItemsLayout();
        m_window.repaint();
    }

private:
    PicListV1 m_window{nullptr, nullptr};
    PicListV1Model* m_model = m_window.findChild<PicListV1Model*>();
    QAbstractItemView* m_view = m_window.findChild<QAbstractItemView*>();
};

} // namespace bench
