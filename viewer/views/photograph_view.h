// Shows one photograph with the patterns read in it. The wheel and the keys + and - zoom. Dragging and the arrow keys
// move the picture. The key 0 and a double click fit the picture into the view. The view can also show residuals as
// arrows, and the picture without distortion.
#pragma once

#include <QPointer>
#include <QWidget>
#include <memory>

#include "viewer/session/background_work.h"
#include "viewer/session/session_photograph.h"
#include "viewer/session/session_result.h"
#include "viewer/views/photograph_picture.h"

class PhotographView : public QWidget {
    Q_OBJECT

public:
    explicit PhotographView(QWidget *parent = nullptr);

    // Shows the photograph, or an empty view if it is null. The picture is loaded in the background.
    void showPhotograph(const SessionPhotograph *photograph);
    void setResult(std::shared_ptr<const SessionResult> result);
    int photographId() const { return photograph.id; }

    QSize sizeHint() const override { return {560, 420}; }
    QSize minimumSizeHint() const override { return {200, 150}; }

public slots:
    void setUndistorted(bool isWanted);
    void setShowsResiduals(bool isWanted);
    void setResidualFactor(int factor);
    void setShowsCorners(bool isWanted);
    void setPicksCorners(bool isWanted);
    void zoomIn() { zoom(1.25, rect().center()); }
    void zoomOut() { zoom(0.8, rect().center()); }
    void fit();
    // Moves this pixel of the photograph to the middle of the view. If the scale is less than two pixels of the view
    // per pixel of the photograph, it is first raised to two.
    void centreOn(QPointF pixel);

signals:
    // A corner was clicked after setPicksCorners(true). `pixel` is the corner's position in the photograph.
    void cornerPicked(QPointF pixel);

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void loadPicture();
    void makeUndistorted();
    void zoom(double factor, QPointF about);
    void pick(QPointF place);
    bool showsUndistorted() const { return wantsUndistorted && !straight.levels.empty(); }
    // Returns where the view shows a pixel of the photograph; the place may be outside the view. Empty if the view
    // shows the undistorted picture and the pixel has no place in it (see undistorted() in photograph_picture.h).
    std::optional<QPointF> place(QPointF pixel) const;
    void drawPicture(QPainter &painter) const;
    void drawReading(QPainter &painter, int index) const;
    void drawAxes(QPainter &painter, const pattern_reader::PatternReading &reading) const;
    struct ResidualArrow {
        QPointF from;        // in the view: where the corner was seen
        QPointF residual;    // pixels of the photograph: where the corner was seen, minus where it was predicted
        bool counts = true;  // false if the calibration does not use the corner
    };
    // Returns the residuals to draw: only the largest one in each small square of the view.
    std::vector<ResidualArrow> residualArrows() const;
    void drawResiduals(QPainter &painter) const;
    QString hint() const;

    SessionPhotograph photograph;
    std::shared_ptr<const SessionResult> result;
    PhotographPicture picture;
    PhotographPicture straight;  // the undistorted picture; empty until it has been made
    bool isLoading = false;
    bool wantsUndistorted = false;
    bool wantsResiduals = true;
    bool wantsCorners = true;
    bool picksCorners = false;
    int residualFactor = 100;
    bool isFitted = true;
    double scale = 1;  // pixels of the view per pixel of the photograph
    QPointF origin;    // where the photograph's top-left corner is in the view
    QPointF pressedAt;
    QPointF lastMouse;
    BackgroundWork work{1};
};
