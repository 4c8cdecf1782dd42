// Waits until an application first paints a view of the class FIRST_PAINT_OF, which the build defines. Then prints the
// processor time and the elapsed time (see now() in measurement.h), and ends the application. A program and the empty
// window that it is compared with are both linked with this file, so both are measured in the same way.
#include <QApplication>
#include <QTimer>
#include <cstdio>

#include "bench/measurement.h"

namespace {

class FirstPaint : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::Paint && object->parent() != nullptr &&
            object->parent()->inherits(FIRST_PAINT_OF)) {
            qApp->removeEventFilter(this);
            // This filter sees the paint event before the view handles it. The timer fires after the view has painted.
            QTimer::singleShot(0, [] {
                const Time time = now();
                std::printf("%.3f %.3f\n", time.processor, time.elapsed);
                QApplication::exit();
            });
        }
        return false;
    }
};

void watchForFirstPaint() {
    qApp->installEventFilter(new FirstPaint(qApp));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForFirstPaint)
