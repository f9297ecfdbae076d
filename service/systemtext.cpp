#include "service/systemtext.h"

#include <QStringDecoder>

QString systemText(const std::string& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(QByteArrayView(bytes));
    return utf8.hasError() ? QString::fromLocal8Bit(QByteArrayView(bytes)) : text;
}
