// While an object of this class exists, Qt's local 8-bit encoding is ISO-8859-15, where the byte A4 is the euro sign.
// Code that decodes this byte as UTF-8 or Latin-1 does not get a euro sign.
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
