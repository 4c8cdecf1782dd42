// The tab "Scene". It shows the prints of the first group, the cameras that saw them, and the chosen coordinate system
// in three dimensions. A group consists of prints that are linked by photographs. Dragging with the left button turns
// the scene, and so do the arrow keys. Dragging with Shift or with another button moves it. The wheel and the keys
// + and - zoom. A double click restores the first view.
#pragma once

#include <Eigen/Core>
#include <QPolygonF>

#include "viewer/session/common_axes.h"
#include "viewer/session/print_texture.h"
#include "viewer/views/result_view.h"

class SceneView : public ResultView {
    Q_OBJECT

public:
    explicit SceneView(QWidget *parent = nullptr);
    void setSettings(const SessionSettings &newSettings);
    QSize minimumSizeHint() const override { return {200, 200}; }

protected:
    void refresh() override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Facet {
        Outline corners;   // in the world, mm
        QColor fill;       // if invalid, only the outline is drawn
        QColor outline;    // if invalid, no outline is drawn
        PrintBlock block;  // in the world, mm; without cells if the facet is not part of a print
    };
    struct Label {
        Eigen::Vector3d place;
        QString text;
    };

    void addPrints();
    void addCameras();
    void addCamera(const calibration::RigidMotion &worldFromCamera, const calibration::Camera &camera,
                   const Eigen::VectorXd &intrinsics, const QColor &colour);
    void lookAtAll();
    void turn(double x, double y);
    void setAngles(double newAzimuth, double newElevation);
    // Converts a place in the world to the coordinate system of the eye that looks at the scene. The origin is at the
    // eye, x points to the right, y down, and z away from the eye. The unit is `reach`.
    Eigen::Vector3d fromEye(const Eigen::Vector3d &place) const;
    QPointF onScreen(const Eigen::Vector3d &inEye) const;
    void drawAxes(QPainter &painter) const;

    SessionSettings settings;
    calibration::RigidMotion worldFromAxes;
    std::vector<Facet> facets;
    std::vector<Label> labels;
    Eigen::Vector3d middle = Eigen::Vector3d::Zero();
    double reach = 1000;                // mm, from the middle to a corner of the box around everything
    double cameraSize = 100;            // mm, height of the pyramid that stands for a camera
    double printReach = 100;            // mm, half the diagonal of the largest print
    double azimuth = 0, elevation = 0;  // radians
    Eigen::Matrix3d eyeRotation;        // follows from the angles
    double zoom = 1;
    QPointF shift;
    QPointF lastMouse;
};
