#pragma once

#include "eventlist/Arguments.h"
#include "eventlist/StoredText.h"

/// What the commands that resolve stored descriptions have in common.
class ResolvedTexts
{
public:
    static QVector<Option> options();

    explicit ResolvedTexts(const Arguments& arguments);

    /// Resolves an event and keeps it for print().
    /// \param source  named when that fails
    void add(const StoredText& text, const QString& source);

    /// Tells that a source cannot be read.
    void fail(const QString& source, const QString& reason);

    /// \returns the exit code
    int print() const;

private:
    struct Resolved
    {
        QString eventId;
        QVariantMap texts;
    };

    const QString m_language;
    const QString m_textFolder;
    const bool m_isJson;
    QVector<Resolved> m_resolved;
    bool m_hasFailed = false;
};
