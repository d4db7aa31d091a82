#pragma once

#include <QString>
#include <QVector>

/// What a source says in quotes. A url that a source uses stands there whole.
///
/// - C, C++, QML, JavaScript, JSON and Python: every string literal outside of comments and
///   #include lines; literals that follow each other are one.
/// - Any other file, a shell script above all: every word outside of comments that has a "/" and
///   does not begin or end with one, for quotes lie within quotes there.
class SourceTexts
{
public:
    struct Text
    {
        QString text;
        int line = 0;
    };

    /// \param path  decides by its ending how the content is read
    static QVector<Text> of(const QString& path, const QString& content);

    /// Patterns of the files that are read when a folder is named.
    static QStringList filePatterns();
};
