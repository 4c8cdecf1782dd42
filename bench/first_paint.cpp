// Ends an application once a graphics view of it has painted its first picture, and says when that was. Linked into
// the program's own start-up and into the empty window that it is compared with, so that both are measured alike.
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
            // Behind the paint event that is only now on its way.
            QTimer::singleShot(0, [] {
                std::printf("%.3f\n", milliseconds());
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
