// The Hemlark desktop application.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName("Hemlark");
    QLabel label(QObject::tr("Hemlark"));
    label.show();
    return app.exec();
}
