#include "viewer/report_pdf.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgRenderer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextObjectInterface>
#include <QUrl>
#include <cmath>

#include "viewer/report_document.h"

namespace {

constexpr int dotsPerInch = 600;
constexpr double marginMm = 16;
constexpr double footerPoints = 22;
constexpr double textPoints = 9.5;
constexpr double captionPoints = 8;
constexpr double greatestHeight = 0.6;  // the greatest height of a figure's drawing, as a share of the page's height
constexpr double latestStart = 0.65;    // no part of the report begins below this share of the page's height
constexpr double columnShare = 0.485;   // width of a figure in a column, as a share of the page's width
constexpr double pictureWidthPoints = 54;

double points(double count) {
    return count * dotsPerInch / 72;
}

QFont fontOf(double size, bool isBold = false) {
    QFont font("DejaVu Sans");
    font.setPointSizeF(size);
    font.setBold(isBold);
    return font;
}

// Draws the figures. A figure, its title and its caption are drawn as one object, so that no page ends between them.
class FigurePainter : public QObject, public QTextObjectInterface {
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    FigurePainter(const ReportDocument &ownDocument, QPaintDevice &ownDevice, const QSizeF &ownPage)
        : document(ownDocument), device(ownDevice), page(ownPage) {}

    QSizeF intrinsicSize(QTextDocument *, int, const QTextFormat &format) override {
        const QString name = format.toImageFormat().name();
        if (const QImage *picture = pictureOf(name)) {
            return picture->isNull() ? QSizeF(1, 1)
                                     : QSizeF(points(pictureWidthPoints),
                                              points(pictureWidthPoints) * picture->height() / picture->width());
        }
        const ReportFigure &figure = figureOf(name);
        const double width = widthOf(figure);
        return {width, heightOf(figure.title, titleFont, width) + drawingSize(figure, width).height() +
                           heightOf(figure.caption, captionFont, width) + points(4)};
    }

    void drawObject(QPainter *painter, const QRectF &rect, QTextDocument *, int, const QTextFormat &format) override {
        const QString name = format.toImageFormat().name();
        if (const QImage *picture = pictureOf(name)) {
            painter->drawImage(rect, *picture);
            return;
        }
        const ReportFigure &figure = figureOf(name);
        painter->save();
        painter->setPen(Qt::black);
        QRectF room = rect;
        drawText(*painter, figure.title, titleFont, room);
        const QSizeF size = drawingSize(figure, rect.width());
        painter->save();
        painter->setClipRect(QRectF(room.topLeft(), size), Qt::IntersectClip);
        QSvgRenderer(figure.svg).render(painter, QRectF(room.topLeft(), size));
        painter->restore();
        room.setTop(room.top() + size.height() + points(2));
        painter->setPen(QColor(68, 68, 68));
        drawText(*painter, figure.caption, captionFont, room);
        painter->restore();
    }

private:
    const QImage *pictureOf(const QString &name) const {
        return name.startsWith("picture:") ? &document.pictures.at(size_t(name.section(':', 1).toInt())) : nullptr;
    }
    const ReportFigure &figureOf(const QString &name) const {
        return document.figures.at(size_t(name.section(':', 1).toInt()));
    }
    double widthOf(const ReportFigure &figure) const { return page.width() * (figure.isWide ? 0.98 : columnShare); }

    QSizeF drawingSize(const ReportFigure &figure, double width) const {
        const QSizeF own = QSvgRenderer(figure.svg).viewBoxF().size();
        return own.isEmpty() ? QSizeF(width, 1)
                             : own.scaled(width, greatestHeight * page.height(), Qt::KeepAspectRatio);
    }
    double heightOf(const QString &text, const QFont &font, double width) const {
        return text.isEmpty() ? 0
                              : QFontMetricsF(font, &device)
                                    .boundingRect(QRectF(0, 0, width, page.height()), Qt::TextWordWrap, text)
                                    .height();
    }
    void drawText(QPainter &painter, const QString &text, const QFont &font, QRectF &room) const {
        painter.setFont(font);
        painter.drawText(room, Qt::AlignLeft | Qt::TextWordWrap, text);
        room.setTop(room.top() + heightOf(text, font, room.width()));
    }

    const ReportDocument &document;
    QPaintDevice &device;
    QSizeF page;
    QFont titleFont = fontOf(textPoints, true);
    QFont captionFont = fontOf(captionPoints);
};

const char *const styleSheet =
    "h1 { font-size: 20pt; } h2 { font-size: 14pt; margin-top: 14px; } h3 { font-size: 10pt; } "
    "th { color: #444444; } small { color: #444444; }";

// A part begins with a heading of level 2. Moves every part that would begin below `latestStart` to the next page.
void beginPartsAtTheTop(QTextDocument &document, double pageHeight) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const double top = std::fmod(document.documentLayout()->blockBoundingRect(block).top(), pageHeight);
        if (block.blockFormat().headingLevel() == 2 && top > latestStart * pageHeight) {
            QTextBlockFormat format = block.blockFormat();
            format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
            QTextCursor(block).setBlockFormat(format);
            // Forces a new layout of the whole document. Qt's own layout after setBlockFormat is partial and loses
            // lines.
            document.setPageSize(document.pageSize());
        }
    }
}

void drawPages(const QTextDocument &document, const QString &title, const QSizeF &page, QPdfWriter &writer) {
    QPainter painter(&writer);
    const int count = document.pageCount();
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            writer.newPage();
        }
        painter.save();
        painter.translate(0, -i * page.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = QRectF(QPointF(0, i * page.height()), page);
        context.palette.setColor(QPalette::Text, Qt::black);
        painter.setClipRect(context.clip);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        painter.setFont(fontOf(captionPoints));
        painter.setPen(QColor(68, 68, 68));
        const QRectF footer(0, page.height(), page.width(), points(footerPoints));
        painter.drawText(footer, Qt::AlignLeft | Qt::AlignBottom, title);
        painter.drawText(footer, Qt::AlignRight | Qt::AlignBottom, QString("%1 / %2").arg(i + 1).arg(count));
    }
}

}  // namespace

QByteArray reportPdf(const std::string &page) {
    const ReportDocument report = reportDocument(page);
    if (report.html.isEmpty()) {
        return {};
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF(marginMm, marginMm, marginMm, marginMm), QPageLayout::Millimeter);
    writer.setTitle(report.title);
    writer.setCreator("LmView");
    const QSizeF room(writer.width(), writer.height() - points(footerPoints));

    FigurePainter figures(report, writer, room);
    QTextDocument document;
    document.documentLayout()->setPaintDevice(&writer);
    document.documentLayout()->registerHandler(QTextFormat::ImageObject, &figures);
    document.setDocumentMargin(0);
    document.setDefaultFont(fontOf(textPoints));
    document.setDefaultStyleSheet(styleSheet);
    document.setPageSize(room);
    document.setHtml(report.html);
    beginPartsAtTheTop(document, room.height());
    drawPages(document, report.title, room, writer);
    return bytes;
}

#include "report_pdf.moc"
