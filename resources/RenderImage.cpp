#include <QCoreApplication>
#include <QImageReader>

#include <cstdio>

// quorvane-render-image FILE.svg SIZE FILE.png: renders a square drawing in SIZE by SIZE points, for the
// build. Without a font: a drawing must hold no text.
int main(int argumentCount, char** arguments)
{
    const QCoreApplication application(argumentCount, arguments);
    if (argumentCount != 4) {
        std::fputs("usage: quorvane-render-image FILE.svg SIZE FILE.png\n", stderr);
        return 2;
    }
    const int size = QByteArray(arguments[2]).toInt();
    QImageReader reader(QString::fromLocal8Bit(arguments[1]));
    reader.setScaledSize({size, size});
    const QImage image = reader.read();
    if (image.isNull()) {
        std::fprintf(stderr, "quorvane-render-image: cannot read '%s': %s\n", arguments[1],
            qPrintable(reader.errorString()));
        return 1;
    }
    if (!image.save(QString::fromLocal8Bit(arguments[3]), "PNG")) {
        std::fprintf(stderr, "quorvane-render-image: cannot write '%s'\n", arguments[3]);
        return 1;
    }
    return 0;
}
