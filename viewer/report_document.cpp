#include "viewer/report_document.h"

#include <QMap>
#include <QSet>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

const char *const quiet = "#444444";
const char *const line = "#bbbbbb";
constexpr int tilesPerRow = 3;
constexpr int factsPerRow = 2;

// These functions return the colours that the web page has when it is printed.
const char *toneOf(const QString &grade) {
    return grade == "good" ? "#17733c" : grade == "usable" ? "#96620a" : "#b3261e";
}

const char *cameraColour(int index) {
    static const char *const colours[] = {"#0b5cad", "#b4480f", "#17733c", "#7a3fa0", "#a3174f", "#4f6b12"};
    return colours[size_t(index) % std::size(colours)];
}

QXmlStreamAttributes attributesFor(const QString &styleClass) {
    static const QMap<QString, QString> styles{
        {"paper", "fill:#ffffff"},
        {"frame", "stroke:#444444;stroke-width:1.2"},
        {"grid", "stroke:#bbbbbb;stroke-width:1"},
        {"thin", "stroke:#0b5cad;stroke-width:1;stroke-opacity:0.75"},
        {"strong", "stroke:#b4480f;stroke-width:2;stroke-linecap:round;stroke-linejoin:round"},
        {"dots", "fill:#444444"},
        {"bar", "fill:#4b86c2"},
        {"cross", "stroke:#b3261e;stroke-width:2"},
        {"print", "fill:#96620a;fill-opacity:0.3;stroke:#96620a;stroke-width:1.6;stroke-linejoin:round"},
        {"halo", "fill:#ffffff;stroke:#ffffff;stroke-width:4;stroke-linejoin:round;stroke-opacity:0.85"},
        {"value", "fill:#111820"},
        {"text", "fill:#444444"},
    };
    QString style = styles.value(styleClass);
    if (styleClass.startsWith("camera")) {
        style = QString("stroke:%1;stroke-width:1.1;stroke-opacity:0.8").arg(cameraColour(styleClass.mid(6).toInt()));
    }
    QXmlStreamAttributes attributes;
    for (const QString &one : style.split(';', Qt::SkipEmptyParts)) {
        attributes.append(one.section(':', 0, 0), one.section(':', 1));
    }
    if (!style.contains("fill:")) {
        attributes.append("fill", "none");
    }
    return attributes;
}

class Reader {
public:
    explicit Reader(const std::string &page) : xml(QByteArray::fromStdString(page)) {}

    ReportDocument read() {
        while (!xml.atEnd()) {
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("main")) {
                children(document.html);
            } else if (xml.isStartElement() && xml.name() == QLatin1String("title")) {
                document.title = xml.readElementText();
            }
        }
        if (xml.hasError()) {
            document.html.clear();
        }
        return std::move(document);
    }

private:
    QString styleClass() const { return xml.attributes().value("class").toString(); }

    // Converts all children of the current element, and leaves the reader at the end of this element.
    void children(QString &html) {
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isEndElement()) {
                return;
            }
            if (xml.isStartElement()) {
                element(html);
            } else if (xml.isCharacters()) {
                html += xml.text().toString().toHtmlEscaped();
            }
        }
    }

    QString content() {
        QString html;
        children(html);
        return html;
    }

    void element(QString &html) {
        const QString name = xml.name().toString();
        const QString kind = styleClass();
        if (name == "section" && kind.startsWith("verdict")) {
            verdict(html, toneOf(kind.section(' ', 1, 1)));
        } else if (kind == "tiles") {
            cells(html, tilesPerRow, "font-size:8pt");
        } else if (kind == "facts") {
            cells(html, factsPerRow, "");
        } else if (kind.startsWith("figures")) {
            figures(html);
        } else if (name == "figure") {
            html += "<p>" + figure(true) + "</p>";
        } else if (name == "img") {
            html += picture();
            xml.skipCurrentElement();
        } else if (name == "table") {
            table(html);
        } else if (name == "dt") {
            html += "<p style=\"margin-bottom:0; font-weight:600\">" + content() + "</p>";
        } else if (name == "dd") {
            html += "<p style=\"margin-top:0\">" + content() + "</p>";
        } else if (name == "summary") {
            html += "<p><b>" + content() + "</b></p>";
        } else if (kind.startsWith("key")) {
            html += QString("<span style=\"color:%1\">▲ ").arg(cameraColour(kind.right(1).toInt())) + content() +
                    "&nbsp;&nbsp;&nbsp;</span>";
        } else if (keptElements().contains(name)) {
            html += "<" + name + ">" + content() + "</" + name + ">";
        } else {
            children(html);
        }
    }

    static const QSet<QString> &keptElements() {
        static const QSet<QString> names{"h1", "h2", "h3", "h4", "p", "ul", "ol", "li", "b", "small", "code", "em"};
        return names;
    }

    void verdict(QString &html, const QString &tone) {
        xml.readNextStartElement();  // the sign
        const QString sign = content();
        html += QString(
                    "<table width=\"100%\" cellpadding=\"8\" cellspacing=\"0\"><tr><td width=\"36\" "
                    "bgcolor=\"%1\" style=\"color:#ffffff; font-size:20pt; font-weight:bold; "
                    "vertical-align:middle\"><center>%2</center></td><td bgcolor=\"#f3f5f8\">")
                    .arg(tone, sign);
        QString text;
        children(text);
        html += text.replace("<h2>", QString("<h2 style=\"color:%1; margin-top:0\">").arg(tone)) + "</td></tr></table>";
    }

    // Makes each child a cell of a table.
    void cells(QString &html, int perRow, const QString &style) {
        html += "<table width=\"100%\" cellpadding=\"5\" cellspacing=\"0\" style=\"margin-top:8px\"><tr>";
        for (int i = 0; xml.readNextStartElement(); ++i) {
            html += i > 0 && i % perRow == 0 ? "</tr><tr>" : "";
            html += QString("<td width=\"%1%\" style=\"color:%2; %3\">").arg(100 / perRow).arg(quiet, style);
            cell(html);
            html += "</td>";
        }
        html += "</tr></table>";
    }

    // Converts a value and its name. In a tile, the value comes first; in a fact, the name comes first.
    void cell(QString &html) {
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isEndElement()) {
                return;
            }
            if (xml.isCharacters()) {
                html += xml.text().toString().toHtmlEscaped();
            } else if (xml.isStartElement()) {
                const QString name = xml.name().toString();
                const QString inner = content();
                html += name == "b"
                            ? "<span style=\"font-size:15pt; font-weight:600; color:#000000\">" + inner + "</span>"
                        : name == "dt" ? "<span style=\"font-size:8pt\">" + inner + "</span><br/>"
                        : name == "dd" ? "<span style=\"color:#000000\">" + inner + "</span>"
                                       : "<br/>" + inner;
            }
        }
    }

    void figures(QString &html) {
        html += "<table width=\"100%\" cellpadding=\"4\" cellspacing=\"0\"><tr>";
        QString rest;  // what is not a figure; it is placed below the figures
        for (int i = 0; xml.readNextStartElement();) {
            if (xml.name() == QLatin1String("figure")) {
                html += i > 0 && i % 2 == 0 ? "</tr><tr>" : "";
                html += "<td width=\"50%\">" + figure(false) + "</td>";
                ++i;
            } else {
                children(rest);
            }
        }
        html += "</tr></table>" + rest;
    }

    QString figure(bool isWide) {
        ReportFigure made;
        made.isWide = isWide;
        QString rest;
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("h4")) {
                made.title = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            } else if (xml.name() == QLatin1String("svg")) {
                made.svg = svg();
            } else if (xml.name() == QLatin1String("figcaption")) {
                made.caption = caption(rest);
            } else {
                children(rest);
            }
        }
        document.figures.push_back(std::move(made));
        return QString("<img src=\"figure:%1\"/>").arg(document.figures.size() - 1) + rest;
    }

    // Returns the caption as plain text, which is drawn together with the figure. If the caption has a coloured legend,
    // plain text would lose the colours. Then the caption is added to `rest` as HTML, and the result is empty.
    QString caption(QString &rest) {
        const QString html = content();
        if (html.contains("<span")) {
            rest += "<p style=\"font-size:8pt\">" + html + "</p>";
            return {};
        }
        QString plain = html;
        return plain.replace("&lt;", "<")
            .replace("&gt;", ">")
            .replace("&quot;", "\"")
            .replace("&amp;", "&")
            .simplified();
    }

    QByteArray svg() {
        QByteArray bytes;
        QXmlStreamWriter writer(&bytes);
        writer.writeStartElement("svg");
        writer.writeAttribute("xmlns", "http://www.w3.org/2000/svg");
        writer.writeAttribute("viewBox", xml.attributes().value("viewBox").toString());
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isEndElement() && xml.name() == QLatin1String("svg")) {
                break;
            }
            if (xml.isStartElement() && xml.name() == QLatin1String("text")) {
                svgText(writer);
            } else if (xml.isStartElement() && xml.name() == QLatin1String("title")) {
                xml.skipCurrentElement();
            } else if (xml.isStartElement()) {
                writer.writeStartElement(xml.name().toString());
                for (const QXmlStreamAttribute &attribute : xml.attributes()) {
                    if (attribute.name() == QLatin1String("class")) {
                        writer.writeAttributes(attributesFor(attribute.value().toString()));
                    } else {
                        writer.writeAttribute(attribute);
                    }
                }
            } else if (xml.isEndElement()) {
                writer.writeEndElement();
            }
        }
        writer.writeEndElement();
        return bytes;
    }

    void svgText(QXmlStreamWriter &writer) {
        const QXmlStreamAttributes attributes = xml.attributes();
        const bool isValue = attributes.value("class") == QLatin1String("value");
        const QString text = xml.readElementText();
        const auto write = [&](const QString &style) {
            writer.writeStartElement("text");
            for (const QXmlStreamAttribute &attribute : attributes) {
                if (attribute.name() != QLatin1String("class")) {
                    writer.writeAttribute(attribute);
                }
            }
            writer.writeAttribute("font-family", "DejaVu Sans");
            writer.writeAttribute("font-size", "15");
            writer.writeAttributes(attributesFor(style));
            writer.writeCharacters(text);
            writer.writeEndElement();
        };
        if (isValue) {  // values on coloured ground get a light border, drawn first so that it is below the text
            write("halo");
        }
        write(isValue ? "value" : "text");
    }

    QString picture() {
        const QByteArray source = xml.attributes().value("src").toLatin1();
        document.pictures.push_back(QImage::fromData(QByteArray::fromBase64(source.mid(source.indexOf(',') + 1))));
        return QString("<img src=\"picture:%1\"/>").arg(document.pictures.size() - 1);
    }

    void table(QString &html) {
        QString caption;
        QString rows;
        while (xml.readNextStartElement()) {
            if (xml.name() == QLatin1String("caption")) {
                caption = content();
            } else if (xml.name() == QLatin1String("thead")) {
                rows += "<thead>" + tableRows() + "</thead>";
            } else {
                rows += tableRows();
            }
        }
        html += caption.isEmpty() ? QString() : "<p style=\"margin-bottom:2px\"><b>" + caption + "</b></p>";
        html += QString(
                    "<table border=\"0.5\" cellpadding=\"3\" cellspacing=\"0\" style=\"border-color:%1; "
                    "border-collapse:collapse; border-style:solid; font-size:8pt\">")
                    .arg(line) +
                rows + "</table>";
    }

    QString tableRows() {
        QString html;
        while (xml.readNextStartElement()) {
            const QString kind = styleClass();
            const QString style = kind == "out"      ? QString(" style=\"color:%1\"").arg(toneOf("poor"))
                                  : kind == "chosen" ? QString(" style=\"font-weight:bold\"")
                                                     : QString();
            html += "<tr>";
            while (xml.readNextStartElement()) {
                const QString name = xml.name().toString();
                const QString span = xml.attributes().value("colspan").toString();
                const bool isNumber = styleClass() == "n";  // must be known before content() reads on
                html += "<" + name + (isNumber ? " align=\"right\"" : " align=\"left\"") +
                        (span.isEmpty() ? QString() : " colspan=\"" + span + "\"") + style + ">" + content() + "</" +
                        name + ">";
            }
            html += "</tr>";
        }
        return html;
    }

    QXmlStreamReader xml;
    ReportDocument document;
};

}  // namespace

ReportDocument reportDocument(const std::string &page) {
    return Reader(page).read();
}
