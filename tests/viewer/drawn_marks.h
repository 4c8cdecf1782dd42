// Lists the lines, shapes and texts that a widget draws, with their colours and their places in the widget.
#pragma once

#include <QBuffer>
#include <QColor>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgGenerator>
#include <QTransform>
#include <QWidget>
#include <QXmlStreamReader>

struct DrawnMark {
    QString element;   // "circle", "polyline", "path" or "text"
    QPolygonF points;  // of a circle: its centre; of a text: the left end of its baseline
    QColor stroke;
    QColor fill;
    QString text;
};

// Returns the marks in the order in which they are drawn.
inline QVector<DrawnMark> drawnMarks(QWidget &widget) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setResolution(widget.logicalDpiX());
    generator.setSize(widget.size());
    QPainter painter(&generator);
    widget.render(&painter, {}, {}, QWidget::DrawChildren);
    painter.end();

    const auto numbersIn = [](const QString &text) {
        QVector<double> numbers;
        static const QRegularExpression number("-?[0-9.]+(e-?[0-9]+)?");
        for (auto found = number.globalMatch(text); found.hasNext();) {
            numbers << found.next().captured().toDouble();
        }
        return numbers;
    };
    QVector<DrawnMark> marks;
    QTransform place;
    DrawnMark style;
    for (QXmlStreamReader xml(bytes); !xml.atEnd();) {
        if (xml.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const auto value = [attributes = xml.attributes()](const char *name) {
            return attributes.value(name).toString();
        };
        DrawnMark mark = style;
        mark.element = xml.name().toString();
        QVector<double> numbers;
        if (mark.element == "g") {
            const QVector<double> m = numbersIn(value("transform"));
            place = m.size() == 6 ? QTransform(m[0], m[1], m[2], m[3], m[4], m[5]) : QTransform();
            style.stroke = QColor(value("stroke"));
            style.fill = QColor(value("fill"));
            continue;
        }
        if (mark.element == "circle") {
            numbers = {value("cx").toDouble(), value("cy").toDouble()};
        } else if (mark.element == "polyline") {
            numbers = numbersIn(value("points"));
        } else if (mark.element == "path") {
            numbers = numbersIn(value("d"));
        } else if (mark.element == "text") {
            numbers = {value("x").toDouble(), value("y").toDouble()};
            mark.text = xml.readElementText();
        } else {
            continue;
        }
        for (int i = 0; i + 1 < numbers.size(); i += 2) {
            mark.points << place.map(QPointF(numbers[i], numbers[i + 1]));
        }
        marks << mark;
    }
    return marks;
}

// Returns all texts in the order in which they are drawn, with one space between them.
inline QString drawnText(QWidget &widget) {
    QStringList texts;
    for (const DrawnMark &mark : drawnMarks(widget)) {
        if (mark.element == "text") {
            texts << mark.text;
        }
    }
    return texts.join(' ').replace(QChar(0xa0), ' ').simplified();
}

// Returns where a text is drawn; a place far outside the widget if it is not drawn.
inline QPointF placeOfText(const QVector<DrawnMark> &marks, const QString &text) {
    for (const DrawnMark &mark : marks) {
        if (mark.element == "text" && mark.text == text) {
            return mark.points.value(0);
        }
    }
    return {-1e6, -1e6};
}
