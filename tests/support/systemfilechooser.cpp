#include "tests/support/systemfilechooser.h"

#include <QEventLoop>
#include <QUrl>
#include <qpa/qplatformdialoghelper.h>
#include <qpa/qplatformtheme.h>

#include <memory>
#include <private/qguiapplication_p.h>

namespace guitest {

namespace {

class SystemFileChooser final : public QPlatformFileDialogHelper {
public:
    void exec() override { m_loop.exec(); }
    bool show(Qt::WindowFlags /*flags*/, Qt::WindowModality /*modality*/, QWindow* /*parent*/) override {
        return true;
    }
    void hide() override { m_loop.quit(); }

    bool defaultNameFilterDisables() const override { return false; }
    void setDirectory(const QUrl& folder) override { m_folder = folder; }
    QUrl directory() const override { return m_folder; }
    void selectFile(const QUrl& file) override { m_files = {file}; }
    QList<QUrl> selectedFiles() const override { return m_files; }
    void setFilter() override {}
    void selectNameFilter(const QString& filter) override { m_filter = filter; }
    QString selectedNameFilter() const override { return m_filter; }

private:
    QEventLoop m_loop;
    QUrl m_folder;
    QList<QUrl> m_files;
    QString m_filter;
};

/// The platform's theme with a file dialog.
class ChooserTheme final : public QPlatformTheme {
public:
    explicit ChooserTheme(QPlatformTheme* base) : m_base(base) {}

    bool usePlatformNativeDialog(DialogType type) const override { return type == FileDialog; }
    QPlatformDialogHelper* createPlatformDialogHelper(DialogType type) const override {
        return type == FileDialog ? new SystemFileChooser : nullptr;
    }
    const QPalette* palette(Palette type) const override { return m_base->palette(type); }
    const QFont* font(Font type) const override { return m_base->font(type); }
    QVariant themeHint(ThemeHint hint) const override { return m_base->themeHint(hint); }

private:
    std::unique_ptr<QPlatformTheme> m_base;
};

} // namespace

void useSystemFileChooser() {
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, false);
    QPlatformTheme*& theme = QGuiApplicationPrivate::platform_theme;
    if (dynamic_cast<ChooserTheme*>(theme) == nullptr)
        theme = new ChooserTheme(theme);
}

} // namespace guitest
