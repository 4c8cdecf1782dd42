// The tab "Result". It shows the verdict, what to do next, the numbers of every calibrated camera, and which
// photographs were left out and why. Without a calibration, it says why there is none.
#pragma once

#include "viewer/views/result_view.h"

class NextPhotographView;
class QTextBrowser;

class SummaryView : public ResultView {
    Q_OBJECT

public:
    explicit SummaryView(QWidget *parent = nullptr);

protected:
    void refresh() override;
    void changeEvent(QEvent *event) override;

private:
    QString html() const;
    QString verdictHtml() const;
    QString camerasHtml() const;
    QString leftOutHtml() const;

    QTextBrowser *text;
    NextPhotographView *next;
};
