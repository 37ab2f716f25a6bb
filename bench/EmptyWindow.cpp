#include <QApplication>
#include <QWidget>

// The plain way of starting: the same libraries and an empty window.
int main(int argc, char **argv)
{
    const QApplication app(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Parcelory"));
    window.resize(1280, 800);
    window.show();
    return QApplication::exec();
}
