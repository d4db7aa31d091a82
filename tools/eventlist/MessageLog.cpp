#include "eventlist/MessageLog.h"

#include "eventlist/Output.h"

#include <QtGlobal>

#include <atomic>

namespace
{
std::atomic<bool> isShown{false};

void handle(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (isShown || type == QtCriticalMsg || type == QtFatalMsg)
    {
        Output::error(text);
    }
}
} // namespace

void MessageLog::take()
{
    qInstallMessageHandler(handle);
}

void MessageLog::setVerbose(bool isVerbose)
{
    isShown = isVerbose;
}
