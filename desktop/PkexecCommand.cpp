#include "desktop/PkexecCommand.h"

#include "desktop/InputLock.h"

#include <QEventLoop>
#include <QProcess>
#include <QProcessEnvironment>

namespace quorvane::desktop {

namespace {

// The error output of the ended program, as one line of limited length.
std::string outcomeOf(QProcess& program)
{
    if (program.error() == QProcess::FailedToStart)
        return "pkexec: " + program.errorString().toStdString();
    if (program.state() != QProcess::NotRunning)
        return "pkexec: interrupted";
    if (program.exitStatus() == QProcess::CrashExit)
        return "pkexec: ended by a signal";
    if (program.exitCode() == 0)
        return {};
    constexpr qsizetype longestComplaint = 1000;
    const QByteArray complaint = program.readAllStandardError().simplified().left(longestComplaint);
    return "pkexec: status " + std::to_string(program.exitCode()) + ": " + complaint.toStdString();
}

} // namespace

std::string PkexecCommand::run(const std::string& command)
{
    QProcess program;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("SHELL")); // pkexec refuses a shell that /etc/shells does not list
    program.setProcessEnvironment(environment);
    program.setStandardInputFile(QProcess::nullDevice());
    program.setStandardOutputFile(QProcess::nullDevice());
    QEventLoop ended;
    QObject::connect(&program, &QProcess::finished, &ended, &QEventLoop::quit);
    QObject::connect(&program, &QProcess::errorOccurred, &ended, [&ended](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) // which emits no finished()
            ended.quit();
    });
    program.start(QStringLiteral("pkexec"),
        {QStringLiteral("/bin/sh"), QStringLiteral("-c"), QString::fromStdString(command)});
    if (program.state() != QProcess::NotRunning) {
        const InputLock lock;
        ended.exec();
    }
    return outcomeOf(program);
}

} // namespace quorvane::desktop
