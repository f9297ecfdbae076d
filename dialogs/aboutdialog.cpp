#include "dialogs/aboutdialog.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int titlePointSize = 12;
constexpr QSize windowSize(400, 150);

} // namespace

AboutDialog::AboutDialog([[maybe_unused]] QWidget* parent) : QDialog(nullptr) {
    setWindowTitle(tr("关于"));
    resize(windowSize);

    auto* const title = new QLabel(tr("摄像头测试工具"));
    QFont font = title->font();
    font.setPointSize(titlePointSize);
    title->setFont(font);
    QFrame* const titleFrame = framed(title);
    titleFrame->setAutoFillBackground(true);

    const QString notice = tr("版权所有：Tessaly\nVersion:%1");
    QFrame* const versionFrame = framed(new QLabel(notice.arg(QStringLiteral(CAMERA_TOOL_VERSION))));

    auto* const layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("vlayout1"));
    const auto addSpacer = [layout] {
        layout->addSpacerItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding));
    };
    addSpacer();
    addSpacer();
    layout->addWidget(titleFrame);
    layout->addWidget(versionFrame);
    addSpacer();
}

QFrame* AboutDialog::framed(QLabel* label) {
    auto* const frame = new QFrame(this);
    frame->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    label->setAlignment(Qt::AlignCenter);
    auto* const layout = new QHBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    return frame;
}
