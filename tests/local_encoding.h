// While an object of this class exists, Qt's local 8-bit encoding is ISO-8859-15, where the byte A4 is the euro sign.
// Code that takes this byte for UTF-8 or Latin-1 gets another text.
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
