#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace quorvane::test {

// Stands for the desktop's programs that open files.
class FileOpener : public QObject {
    Q_OBJECT
public:
    FileOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~FileOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QUrl> opened;

public Q_SLOTS:
    void open(const QUrl& file) { opened.append(file); }
};

} // namespace quorvane::test
