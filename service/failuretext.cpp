#include "service/failuretext.h"

#include "link/guarded.h"
#include "service/systemtext.h"

#include <QCoreApplication>

#include <cerrno>

namespace {

QString translated(const char* text) {
    return QCoreApplication::translate("FailureText", text);
}

/// On Windows the library tells a missing port by its text, where the link has no error number for it.
bool saysMissing(const QString& details) {
    return details.contains(QLatin1String("does not exist"));
}

QString adviceForPort(int errorNumber, const QString& details) {
    if (errorNumber == ENOENT || errorNumber == ENODEV || errorNumber == ENXIO || errorNumber == EIO ||
        saysMissing(details))
        return translated("串口不存在或已拔出，请插好转接器，再选择串口重试。");
    if (errorNumber == EBUSY)
        return translated("串口正被其他程序占用，请关闭占用它的程序后重试。");
    if (errorNumber == EACCES || errorNumber == EPERM)
        return translated("没有使用该串口的权限，请让管理员授权（Linux：加入 dialout 组并重新登录）后重试。");
    if (errorNumber == ENOTTY || errorNumber == EISDIR)
        return translated("所选设备不是串口，请选择其他串口。");
    return translated("请检查转接器和所选串口后重试。");
}

} // namespace

FailureText failureText(const std::exception_ptr& failure) {
    ExceptionWords words;
    try {
        std::rethrow_exception(failure);
    } catch (...) {
        words = describeException();
    }
    const QString details = words.text ? systemText(*words.text) : translated("未知错误");
    if (words.portError)
        return {translated("打开串口失败："), details, adviceForPort(*words.portError, details)};
    return {translated("操作失败："), details, translated("请关闭串口，重新打开后再试。")};
}
