// The forms: names, texts, sizes, keyboard, screen readers.
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "tests/dialogs/dialogtest.h"

#include <QComboBox>
#include <QFrame>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>

#include <map>

namespace {

struct Form {
    const char* root;
    const char* title;
    QWidget* (*make)();
    std::map<QString, QString> texts;        // labels and buttons, at first
    std::map<QString, QString> placeholders; // line edits
    QStringList containers;
    QStringList hidden;
    QStringList tabOrder; // visible stops
};

template <typename Window>
QWidget* make() {
    return new Window(nullptr, nullptr);
}

const Form serialNumberForm{"SetSN",
                            "SN设置窗口",
                            make<SetSN>,
                            {{"et_setsn", ""},
                             {"btn_setsn", "设置"},
                             {"btn_gensn", "生成序列号"},
                             {"label_setsn", "当前序列号"},
                             {"btn_getsn", "获取当前SN号"},
                             {"label_hint", ""}},
                            {{"et_setsn2", "请输入序列号"}},
                            {"verticalLayout", "frame", "frame_5", "frame_4", "frame_2", "frame_3",
                             "horizontalLayout", "verticalLayout_3", "verticalLayout_2", "horizontalLayout_2",
                             "horizontalLayout_3", "line"},
                            {"et_setsn2"},
                            {"btn_gensn", "btn_setsn", "btn_getsn"}};

const Form heaterForm{"SetPwmHeat",
                      "加热丝占空比设置窗口",
                      make<SetPwmHeat>,
                      {{"btn_setheat", "设置"},
                       {"label_setheat", "当前加热丝占空比"},
                       {"btn_getheat", "获取当前加热丝占空比"},
                       {"label_hint", ""}},
                      {{"et_setheat", "请输入加热丝占空比"}},
                      {"verticalLayout", "frame", "horizontalLayout", "frame_2", "horizontalLayout_2",
                       "frame_3", "horizontalLayout_3"},
                      {"et_setheat"},
                      {"cb_setheat", "btn_setheat", "btn_getheat"}};

const Form rateForm{"SetPicRate",
                    "图片压缩率设置窗口",
                    make<SetPicRate>,
                    {{"btn_setsn", "设置"},
                     {"label_setsn", "当前压缩率"},
                     {"btn_getsn", "获取当前压缩率"},
                     {"label_hint", ""}},
                    {{"et_setsn", "请输入图片压缩率"}},
                    {"verticalLayout", "frame", "horizontalLayout", "frame_2", "horizontalLayout_2",
                     "frame_3", "horizontalLayout_3"},
                    {},
                    {"et_setsn", "btn_setsn", "btn_getsn"}};

const Form captureForm{"CaptureDegree",
                       "陀螺仪抓图角度窗口",
                       make<SetCaptureDegree>,
                       {{"btn_set1", "设置抓图角度"},
                        {"rb_closewise", "顺时针"},
                        {"rb_anticlosewise", "逆时针"},
                        {"btn_set2", "设置抓图方向"},
                        {"cb_open", "开启陀螺仪"},
                        {"btn_set3", "设置陀螺仪开启状态"},
                        {"label_1", "当前陀螺仪抓图角度"},
                        {"btn_get1", "获取当前值"},
                        {"label_2", "当前陀螺仪抓图方向"},
                        {"btn_get2", "获取当前值"},
                        {"label_3", "当前陀螺仪开启状态"},
                        {"btn_get3", "获取当前值"},
                        {"label_hint", ""}},
                       {{"et_set1_0", "请输入角度A值"}, {"et_set1_1", "请输入角度B值"}},
                       {"verticalLayout", "frame", "horizontalLayout", "frame_4", "horizontalLayout_4",
                        "frame_7", "horizontalLayout_7", "frame_2", "horizontalLayout_2", "frame_5",
                        "horizontalLayout_5", "frame_6", "horizontalLayout_6", "frame_3",
                        "horizontalLayout_3"},
                       {"frame_3"},
                       {"et_set1_0", "et_set1_1", "btn_set1", "btn_get1", "rb_closewise", "rb_anticlosewise",
                        "btn_set2", "btn_get2", "cb_open", "btn_set3", "btn_get3"}};

const Form locationForm{"SetCameraLocation",
                        "摄像头安装位置窗口",
                        make<SetCameraLocation>,
                        {{"btn_setsn", "设置"},
                         {"label_1", "当前俯仰角"},
                         {"btn_1", "获取"},
                         {"label_2", "当前横滚角"},
                         {"btn_2", "获取"},
                         {"label_3", "当前偏航角"},
                         {"btn_3", "获取"},
                         {"label_4", "当前加速度"},
                         {"btn_4", "获取"},
                         {"label_hint", ""}},
                        {{"et_setsn", "请输入序列号"}},
                        {"verticalLayout", "frame", "horizontalLayout", "frame_2", "horizontalLayout_2",
                         "frame_4", "horizontalLayout_4", "frame_5", "horizontalLayout_5", "frame_6",
                         "horizontalLayout_6", "frame_3", "horizontalLayout_3"},
                        {"btn_1", "btn_2", "btn_3", "btn_4"},
                        {"btn_refresh"}};

QString textOfAny(const QWidget* widget) {
    return widget->property("text").toString();
}

} // namespace

class SettingForm : public testing::TestWithParam<const Form*> {
protected:
    SettingForm() : m_window(form().make()) {
        m_window->show();
        // Without a link every read has failed; the failure texts are the longest.
        QThreadPool::globalInstance()->waitForDone();
    }

    [[nodiscard]] static const Form& form() { return *GetParam(); }

    std::unique_ptr<QWidget> m_window;
};

INSTANTIATE_TEST_SUITE_P(Windows, SettingForm,
                         testing::Values(&serialNumberForm, &heaterForm, &rateForm, &captureForm,
                                         &locationForm),
                         [](const auto& tested) { return std::string(tested.param->root); });

TEST_P(SettingForm, HasItsNamesTextsAndSizes) {
    EXPECT_EQ(m_window->objectName(), form().root);
    EXPECT_EQ(m_window->windowTitle(), form().title);
    EXPECT_EQ(m_window->size(), QSize(400, 300));
    for (const auto& [name, text] : form().texts)
        EXPECT_EQ(textOfAny(part<QWidget>(m_window.get(), name)), text) << name.toStdString();
    for (const auto& [name, text] : form().placeholders) {
        const auto* const edit = part<QLineEdit>(m_window.get(), name);
        EXPECT_EQ(edit->placeholderText(), text);
        EXPECT_TRUE(edit->toolTip().isEmpty());
    }
    for (const QString& name : form().containers)
        EXPECT_NE(m_window->findChild<QObject*>(name), nullptr) << name.toStdString();
    EXPECT_EQ(part<QFrame>(m_window.get(), "frame_3")->maximumHeight(), 50);
    for (const QString& name : form().hidden)
        EXPECT_TRUE(part<QWidget>(m_window.get(), name)->isHidden()) << name.toStdString();
}

TEST_P(SettingForm, CutsNoTextInItsSmallestSize) {
    QTest::qWait(20); // failure texts of a fetch
    m_window->resize(1, 1);
    QTest::qWait(20);
    for (const QWidget* widget : m_window->findChildren<QWidget*>()) {
        const bool collapsed = widget->parentWidget()->maximumSize().isEmpty();
        if (!widget->isVisible() || collapsed || textOfAny(widget).isEmpty())
            continue;
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << widget->objectName().toStdString();
        EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << widget->objectName().toStdString();
    }
    for (const auto& [name, text] : form().placeholders) {
        const auto* const edit = part<QLineEdit>(m_window.get(), name);
        if (edit->isVisible() && edit->maximumSize().width() > 0 &&
            !edit->parentWidget()->maximumSize().isEmpty()) {
            EXPECT_GE(edit->width(), edit->fontMetrics().horizontalAdvance(text) + 8);
        }
    }
}

TEST_P(SettingForm, MovesTheFocusInReadingOrder) {
    QStringList walked;
    const QWidget* widget = m_window.get();
    while ((widget = widget->nextInFocusChain()) != m_window.get()) {
        const bool collapsed =
            widget->parentWidget() != nullptr && widget->parentWidget()->maximumSize().isEmpty();
        if (widget->isVisible() && !collapsed && (widget->focusPolicy() & Qt::TabFocus) != 0)
            walked.append(widget->objectName());
    }
    EXPECT_EQ(walked, form().tabOrder);
}

TEST_P(SettingForm, HasNoHiddenTabStop) {
    for (const QWidget* widget : m_window->findChildren<QWidget*>()) {
        const bool outOfSight = !widget->isVisible() || widget->visibleRegion().isEmpty();
        if (outOfSight && widget->window() == m_window.get()) {
            EXPECT_EQ(widget->focusPolicy() & Qt::TabFocus, 0) << widget->objectName().toStdString();
        }
    }
}

TEST_P(SettingForm, NamesEveryControlOnTheTabOrder) {
    std::map<QString, QString> names;
    for (const QWidget* widget : m_window->findChildren<QWidget*>()) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0 || widget->objectName().startsWith("qt_"))
            continue;
        const QString name =
            widget->accessibleName().isEmpty() ? textOfAny(widget) : widget->accessibleName();
        EXPECT_FALSE(name.isEmpty()) << widget->objectName().toStdString();
        EXPECT_TRUE(names.emplace(name, widget->objectName()).second)
            << name.toStdString() << " names two widgets";
    }
}

TEST(SerialNumberForm, SaysHowToGetANumber) {
    SetSN window(nullptr, nullptr);
    window.show();
    QLabel* const number = part<QLabel>(&window, "et_setsn");
    EXPECT_EQ(number->text(), "");
    const QImage hint = number->grab().toImage();
    number->setProperty("hint", QString());
    EXPECT_NE(number->grab().toImage(), hint);
    press(&window, "btn_gensn");
    EXPECT_EQ(number->text().size(), 16);
}
