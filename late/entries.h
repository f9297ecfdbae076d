// The functions that the library loaded late gives by name, and what they are called there.
#pragma once

#include <QString>

#include <functional>

class QPagedPaintDevice;
class QWidget;

namespace late {

using Paint = std::function<void(QPagedPaintDevice&)>;

struct Entries {
    QString (*adapterText)();
    void (*printOnPaper)(QWidget* parent, const Paint& paint);
};

constexpr const char* entriesName = "cameraLateEntries";

} // namespace late

extern "C" const late::Entries* cameraLateEntries();
