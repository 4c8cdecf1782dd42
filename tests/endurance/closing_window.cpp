// Linked into the program: closes its window, as its user would, once the window has been painted.
#include <QApplication>
#include <QGraphicsView>
#include <QTimer>

namespace {

class CloseAfterPaint : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::Paint && qobject_cast<QGraphicsView *>(object->parent()) != nullptr) {
            qApp->removeEventFilter(this);
            QTimer::singleShot(0, [] { QApplication::closeAllWindows(); });
        }
        return false;
    }
};

void closeAfterPaint() {
    qApp->installEventFilter(new CloseAfterPaint(qApp));
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(closeAfterPaint)
