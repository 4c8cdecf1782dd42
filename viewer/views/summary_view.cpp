#include "viewer/views/summary_view.h"

#include <QEvent>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <cmath>

#include "viewer/views/drawing.h"
#include "viewer/views/next_photograph_view.h"

using calibration::Calibration;
using calibration::LensModel;

namespace {

QString lensTitle(LensModel lens) {
    switch (lens) {
        case LensModel::Pinhole4:
            return SummaryView::tr("pinhole, 4 distortion coefficients");
        case LensModel::Pinhole5:
            return SummaryView::tr("pinhole, 5 distortion coefficients");
        case LensModel::Pinhole8:
            return SummaryView::tr("pinhole, 8 distortion coefficients");
        case LensModel::Pinhole12:
            return SummaryView::tr("pinhole, 12 distortion coefficients");
        case LensModel::Fisheye:
            break;
    }
    return SummaryView::tr("equidistant fisheye");
}

QStringList parameterNames(LensModel lens) {
    QStringList names{"fx", "fy", "cx", "cy"};
    if (lens == LensModel::Fisheye) {
        return names << "k1"
                     << "k2"
                     << "k3"
                     << "k4";
    }
    const QStringList coefficients{"k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4"};
    return names + coefficients.mid(0, calibration::coefficientCount(lens));
}

QString escaped(const std::string &text) {
    return QString::fromStdString(text).toHtmlEscaped();
}

QString row(const QString &name, const QString &value) {
    return QString("<tr><td style='padding-right:14px'>%1</td><td align='right'>%2</td></tr>").arg(name, value);
}

QString list(const std::vector<std::string> &sentences) {
    QString html;
    for (const std::string &sentence : sentences) {
        html += "<li>" + escaped(sentence) + "</li>";
    }
    return html.isEmpty() ? html : "<ul>" + html + "</ul>";
}

QString cameraHtml(const Calibration &calibration, size_t camera) {
    const calibration::Camera &known = calibration.observations.cameras[camera];
    const calibration::CameraTrust &trust = calibration.cameras[camera];
    const Eigen::VectorXd &intrinsics = calibration.estimate.intrinsics[camera];
    // Cameras that the user has not named are called camera, camera-2 and so on. In their headings, the word is not
    // repeated: "Camera-2" instead of "Camera camera-2".
    const QString name = escaped(known.name);
    const QString heading = name.startsWith("camera") ? "C" + name.mid(1) : SummaryView::tr("Camera %1").arg(name);
    QString html = QString("<h3>%1</h3><p>%2 × %3 px, %4</p><table>")
                       .arg(heading)
                       .arg(known.width)
                       .arg(known.height)
                       .arg(lensTitle(known.lens));
    const QStringList names = parameterNames(known.lens);
    for (int i = 0; i < names.size() && i < intrinsics.size(); ++i) {
        const double sigma = size_t(i) < trust.sigmas.size() ? trust.sigmas[size_t(i)] : 0;
        html += row(names[i], withSigma(intrinsics[i], sigma, i < 4 ? "px" : ""));
    }
    html += row(SummaryView::tr("Residual (rms per corner)"), pixels(trust.rms));
    html += row(SummaryView::tr("Corners used"), QString::number(trust.corners));
    html += row(SummaryView::tr("Photographs used"), QString::number(trust.photographs));
    html += row(SummaryView::tr("Median distance of the patterns"),
                QString::number(trust.distance, 'f', 0) + QChar(0xa0) + "mm");
    if (const auto greatest = trust.uncertainty.greatest()) {
        html += row(SummaryView::tr("Greatest uncertainty at that distance"), pixels(*greatest));
    }
    if (trust.halves && trust.halves->greatest()) {
        html += row(SummaryView::tr("Greatest difference between two halves of the photographs"),
                    pixels(*trust.halves->greatest()));
    }
    return html + "</table>";
}

}  // namespace

SummaryView::SummaryView(QWidget *parent)
    : ResultView(parent), text(new QTextBrowser(this)), next(new NextPhotographView(this)) {
    text->setAccessibleName(tr("Result"));
    text->setFrameShape(QFrame::NoFrame);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(text, 3);
    column->addWidget(next, 2);
}

QString SummaryView::verdictHtml() const {
    const calibration::Verdict &verdict = calibrated()->verdict;
    return QString(
               "<table width='100%' cellpadding='10'><tr><td bgcolor='%1'><font "
               "color='white'><b>%2</b></font></td></tr>"
               "</table>")
               .arg(gradeColour(verdict.grade).name(), escaped(verdict.text)) +
           (verdict.advice.empty() ? QString() : "<h3>" + tr("What to do") + "</h3>" + list(verdict.advice));
}

QString SummaryView::camerasHtml() const {
    QString html;
    for (size_t camera = 0; camera < calibrated()->cameras.size(); ++camera) {
        if (calibrated()->estimate.hasCamera[camera]) {
            html += cameraHtml(*calibrated(), camera);
        }
    }
    return html;
}

QString SummaryView::leftOutHtml() const {
    QString rows;
    for (const calibration::LeftOut &leftOut : calibrated()->leftOut) {
        const auto &observations = calibrated()->observations;
        const int photograph = observations.sightings[size_t(leftOut.sighting)].photograph;
        const QString name = QString::fromStdString(observations.photographs[size_t(photograph)].name);
        rows += "<li><b>" + name.section('/', -1).toHtmlEscaped() + "</b>: " + escaped(leftOut.reason) + "</li>";
    }
    return rows.isEmpty() ? rows : "<h3>" + tr("Left out") + "</h3><ul>" + rows + "</ul>";
}

QString SummaryView::html() const {
    if (calibrated() == nullptr) {
        const QString problem = result ? result->problem : QString();
        return problem.isEmpty() ? "<p>" +
                                       tr("Add photographs of printed patterns: from several directions, and with "
                                          "the patterns in every part of the picture. The calibration starts by "
                                          "itself.") +
                                       "</p>"
                                 : QString(
                                       "<table width='100%' cellpadding='10'><tr><td bgcolor='%1'><font "
                                       "color='white'><b>%2</b></font></td></tr></table>")
                                       .arg(gradeColour(calibration::Grade::Poor).name(), problem.toHtmlEscaped());
    }
    const QString notices = list(calibrated()->notices);
    return verdictHtml() + camerasHtml() + (notices.isEmpty() ? QString() : "<h3>" + tr("Good to know") + "</h3>") +
           notices + leftOutHtml();
}

void SummaryView::refresh() {
    text->setHtml(html());
    next->setResult(result);
    next->setVisible(calibrated() != nullptr && calibrated()->next.has_value());
}

void SummaryView::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        refresh();
    }
}
