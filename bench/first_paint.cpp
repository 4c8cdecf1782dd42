// Ends an application after its graphics view has painted its first picture, and prints the time of that. It is linked
// into the program's own start-up and into the empty window that it is compared with, so both are measured in the same
// way.
#include <QApplication>
#include <QGraphicsView>
#include <QTimer>
#include <cstdio>

#include "bench/measurement.h"

namespace {

class FirstPaint : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::Paint && qobject_cast<QGraphicsView *>(object->parent()) != nullptr) {
            qApp->removeEventFilter(this);
            // Runs after the paint event, which is only now being delivered.
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
