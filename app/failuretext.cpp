#include "app/failuretext.h"

#include <QCoreApplication>

#include <serial/serial.h>

#include <cerrno>

namespace {

QString translated(const char* text) {
    return QCoreApplication::translate("FailureText", text);
}

/// On Windows the library tells a missing port by its text, where the link has no error number for it.
bool saysMissing(const QString& what) {
    return what.contains(QLatin1String("does not exist"));
}

QString adviceForPort(int errorNumber, const QString& what) {
    if (errorNumber == ENOENT || errorNumber == ENODEV || errorNumber == ENXIO || errorNumber == EIO ||
        saysMissing(what))
        return translated("串口不存在或已拔出，请插好转接器，再选择串口重试。");
    if (errorNumber == EBUSY)
        return translated("串口正被其他程序占用，请关闭占用它的程序后重试。");
    if (errorNumber == EACCES || errorNumber == EPERM)
        return translated("没有使用该串口的权限，请让管理员授权（Linux：加入 dialout 组并重新登录）后重试。");
    if (errorNumber == ENOTTY || errorNumber == EISDIR)
        return translated("所选设备不是串口，请选择其他串口。");
    return translated("请检查转接器和所选串口后重试。");
}

FailureText otherFailure(const QString& what) {
    return {translated("操作失败：") + what, translated("请关闭串口，重新打开后再试。")};
}

} // namespace

FailureText failureText(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (serial::IOException& error) { // its error number is not readable through a const reference
        const QString what = QString::fromLocal8Bit(error.what());
        return {translated("打开串口失败：") + what, adviceForPort(error.getErrorNumber(), what)};
    } catch (const std::exception& error) {
        return otherFailure(QString::fromLocal8Bit(error.what()));
    } catch (const char* text) {
        return otherFailure(QString::fromUtf8(text));
    } catch (...) {
        return otherFailure(translated("未知错误"));
    }
}
