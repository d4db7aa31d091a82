#pragma once

#include <QJsonObject>
#include <QString>

/// What a piece of work costs this process, all threads together, and how a benchmark tells it.
namespace Meter
{

/// Processor time of all threads.
qint64 processCpuNs();

qint64 wallNs();

/// Bytes that are allocated on the heap now. Zero under callgrind, which has a heap of its own.
qint64 heapBytes();

/// True when callgrind counts the instructions.
bool isCounting();

/// Counts the instructions of a phase and leaves them under this name, each phase by itself.
/// Nothing happens when callgrind is not there.
void beginPhase();
void endPhase(const QString& name);

/// Prints one result on one line, as JSON.
void report(const QJsonObject& result);

/// Prints a word on a line of its own and waits for a line on the standard input: the driver has
/// done what the word asks for.
void ask(const QString& word);

} // namespace Meter
