// While an object of this class exists, the local 8-bit encoding is neither UTF-8 nor Latin-1, but ISO-8859-15, in
// which the euro sign is the byte A4.
#pragma once

#include <QString>
#include <QTextCodec>

class LocalEncoding {
public:
    LocalEncoding() { QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-15")); }
    ~LocalEncoding() { QTextCodec::setCodecForLocale(before); }
    LocalEncoding(const LocalEncoding &) = delete;
    LocalEncoding &operator=(const LocalEncoding &) = delete;

    static QString euro() { return QStringLiteral("\u20AC"); }
    static constexpr const char *euroByte = "\xA4";

private:
    QTextCodec *const before = QTextCodec::codecForLocale();
};
