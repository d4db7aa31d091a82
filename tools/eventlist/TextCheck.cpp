#include "eventlist/TextCheck.h"

#include "Platform/LanguageDefinitions.h"
#include "Platform/TextManager.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace
{
struct Rule
{
    const char* name;
    bool isError;
    const char* finds;
};

constexpr Rule ruleTable[] = {
    {"unreadable", true, "a file that cannot be read"},
    {"no-id", true, "a message without an id, which no text service finds"},
    {"duplicate", true, "a url that stands twice in one language"},
    {"unfinished", true, "a translation that is not finished and so counts as missing"},
    {"empty", true, "a text without a word"},
    {"missing", true, "a url that one language has and another has not"},
    {"placeholders", true, "a text whose placeholders are not those of the other languages"},
    {"nested-placeholder", true, "%1 beside %10: the one would be replaced inside of the other"},
    {"undefined", true, "a url that a source uses and no language file has"},
    {"stale", true, "a compiled file that does not say what its language file says"},
    {"unused", false, "a url that no source uses"},
    {"gone", false, "a message that is marked as obsolete; no compiler takes it over"},
    {"plural", false, "a text with forms for numbers, of which only one would ever be shown"},
    {"language", false, "a file whose name and whose content tell different languages"},
};

bool isErrorRule(const QString& name)
{
    const auto* rule =
        std::find_if(std::begin(ruleTable), std::end(ruleTable),
                     [&](const Rule& one) { return name == QLatin1String(one.name); });
    return rule == std::end(ruleTable) || rule->isError;
}

// The placeholders of this device are "%" and a number.
QStringList placeholdersOf(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("%[0-9]+"));
    QStringList placeholders;
    auto found = form.globalMatch(text);
    while (found.hasNext())
    {
        placeholders.append(found.next().captured());
    }
    placeholders.removeDuplicates();
    placeholders.sort();
    return placeholders;
}

QString listed(const QStringList& placeholders)
{
    return placeholders.isEmpty() ? QStringLiteral("none")
                                  : placeholders.join(QStringLiteral(", "));
}

// What a source would have to be for a text service: words joined by "/".
bool isUrlForm(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A[^\\W\\d]\\w*(?:/\\w+)+\\z"),
                                         QRegularExpression::UseUnicodePropertiesOption);
    return form.match(text).hasMatch();
}

QString collectionOf(const QString& url)
{
    return url.section(QLatin1Char('/'), 0, 0);
}
} // namespace

QVector<QPair<QString, QString>> TextCheck::rules()
{
    QVector<QPair<QString, QString>> rules;
    for (const Rule& rule : ruleTable)
    {
        rules.append({QString::fromLatin1(rule.name), QString::fromLatin1(rule.finds)});
    }
    return rules;
}

void TextCheck::setIgnored(const QStringList& patterns)
{
    m_ignored.clear();
    for (const QString& pattern : patterns)
    {
        m_ignored.append(
            QRegularExpression::anchoredPattern(QRegularExpression::escape(pattern).replace(
                QLatin1String("\\*"), QLatin1String(".*"))));
    }
}

bool TextCheck::isIgnored(const QString& url) const
{
    return std::any_of(m_ignored.begin(), m_ignored.end(), [&](const QString& pattern) {
        return QRegularExpression(pattern).match(url).hasMatch();
    });
}

void TextCheck::addCollections(const QStringList& words)
{
    for (const QString& word : words)
    {
        m_collections.insert(word);
    }
}

void TextCheck::report(const QString& rule, const Place& place, const QString& url,
                       const QString& text)
{
    if (!m_allowed.contains(rule))
    {
        m_findings.append({place.file, place.line, isErrorRule(rule), rule, url, text});
    }
}

void TextCheck::addUnreadable(const QString& path, const QString& reason)
{
    report(QStringLiteral("unreadable"), {path, 0}, QString(),
           QStringLiteral("cannot be read: %1").arg(reason));
}

void TextCheck::addLanguageFile(const LanguageFile& file)
{
    if (!file.errorText().isEmpty())
    {
        report(QStringLiteral("unreadable"), {file.path(), file.errorLine()}, QString(),
               QStringLiteral("cannot be read: %1").arg(file.errorText()));
        return;
    }
    Language& language = m_languages[file.languageKey()];
    language.file = language.file.isEmpty() ? file.path() : language.file;
    const QString key = file.languageKey().section(QLatin1Char('_'), 1);
    if (!key.isEmpty() && !file.language().isEmpty() &&
        file.language().section(QLatin1Char('_'), 0, 0) != key.section(QLatin1Char('_'), 0, 0))
    {
        report(QStringLiteral("language"), {file.path(), 0}, QString(),
               QStringLiteral("the file says that its language is '%1', its name says '%2'")
                   .arg(file.language(), key));
    }
    for (const LanguageFile::Message& message : file.messages())
    {
        addMessage(language, file, message);
    }
}

void TextCheck::addMessage(Language& language, const LanguageFile& file,
                           const LanguageFile::Message& message)
{
    const Place place = {file.path(), message.line};
    const QString& url = message.url;
    if (message.mark == LanguageFile::Mark::gone)
    {
        report(QStringLiteral("gone"), place, url,
               QStringLiteral("'%1' is marked as obsolete").arg(url));
        return;
    }
    if (url.isEmpty())
    {
        report(QStringLiteral("no-id"), place, url, QStringLiteral("a message without an id"));
        return;
    }
    if (language.seen.contains(url))
    {
        const Place& first = language.seen[url];
        report(QStringLiteral("duplicate"), place, url,
               QStringLiteral("'%1' stands in this language already, %2:%3")
                   .arg(url, first.file, QString::number(first.line)));
        return;
    }
    language.seen.insert(url, place);
    m_collections.insert(collectionOf(url));
    if (!m_urls.contains(url))
    {
        m_urls.insert(url, place);
    }
    if (message.mark == LanguageFile::Mark::unfinished)
    {
        report(QStringLiteral("unfinished"), place, url,
               QStringLiteral("the translation of '%1' is not finished").arg(url));
        return;
    }
    if (message.isNumerus)
    {
        report(QStringLiteral("plural"), place, url,
               QStringLiteral("'%1' has forms for numbers; only the first is ever shown").arg(url));
    }
    const QString text = message.texts.value(0);
    if (text.trimmed().isEmpty())
    {
        report(QStringLiteral("empty"), place, url,
               QStringLiteral("the text of '%1' is empty").arg(url));
        return;
    }
    language.texts.insert(url, {text, place});
}

void TextCheck::addSource(const QString& path, const QVector<SourceTexts::Text>& texts)
{
    m_hasSources = true;
    for (const SourceTexts::Text& text : texts)
    {
        if (text.text.contains(QLatin1Char('/')) || m_urls.contains(text.text))
        {
            m_uses.append({text.text, {path, text.line}});
        }
    }
}

void TextCheck::checkPlaceholders(const QString& url, const Text& text)
{
    const QStringList placeholders = placeholdersOf(text.text);
    for (const QString& placeholder : placeholders)
    {
        for (const QString& other : placeholders)
        {
            if (other.size() > placeholder.size() && other.startsWith(placeholder))
            {
                report(QStringLiteral("nested-placeholder"), text.place, url,
                       QStringLiteral("in the text of '%1' the argument of %2 would also replace a "
                                      "part of %3; choose another number")
                           .arg(url, placeholder, other));
                return;
            }
        }
    }
}

void TextCheck::compareLanguages(const QString& url)
{
    // The language of last resort leads, because its texts stand in for missing ones.
    const QString& lastResort = LanguageDefinitions::getSecondFallbackLanguageFilename();
    QString leader = m_languages.value(lastResort).texts.contains(url) ? lastResort : QString();
    for (auto language = m_languages.cbegin(); language != m_languages.cend(); ++language)
    {
        if (!language->seen.contains(url))
        {
            report(QStringLiteral("missing"), {language->file, 0}, url,
                   QStringLiteral("'%1' has no text in %2").arg(url, language.key()));
        }
        leader = leader.isEmpty() && language->texts.contains(url) ? language.key() : leader;
    }
    const QStringList wanted = placeholdersOf(m_languages.value(leader).texts.value(url).text);
    for (const Language& language : qAsConst(m_languages))
    {
        const auto text = language.texts.constFind(url);
        if (text == language.texts.constEnd())
        {
            continue;
        }
        checkPlaceholders(url, *text);
        const QStringList placeholders = placeholdersOf(text->text);
        if (placeholders != wanted)
        {
            report(QStringLiteral("placeholders"), text->place, url,
                   QStringLiteral("the placeholders of '%1' are %2 here, but %3 in %4")
                       .arg(url, listed(placeholders), listed(wanted), leader));
        }
    }
}

int TextCheck::usedCount() const
{
    QSet<QString> used;
    for (const Use& use : m_uses)
    {
        if (m_urls.contains(use.text))
        {
            used.insert(use.text);
        }
    }
    return used.size();
}

void TextCheck::compareWithSources()
{
    QSet<QString> used;
    for (const Use& use : qAsConst(m_uses))
    {
        used.insert(use.text);
        if (!m_urls.contains(use.text) && isUrlForm(use.text) &&
            m_collections.contains(collectionOf(use.text)) && !isIgnored(use.text))
        {
            report(QStringLiteral("undefined"), use.place, use.text,
                   QStringLiteral("'%1' is used here, but no language file has it").arg(use.text));
        }
    }
    for (auto url = m_urls.cbegin(); url != m_urls.cend(); ++url)
    {
        if (!used.contains(url.key()) && !isIgnored(url.key()))
        {
            report(QStringLiteral("unused"), url.value(), url.key(),
                   QStringLiteral("no source uses '%1'").arg(url.key()));
        }
    }
}

void TextCheck::compareWithCompiled(const QString& folder)
{
    const TextManager compiled(folder);
    const QStringList keys = compiled.getLanguages();
    for (auto language = m_languages.cbegin(); language != m_languages.cend(); ++language)
    {
        const QString path = folder + QLatin1Char('/') + language.key() + QStringLiteral(".qm");
        if (!keys.contains(language.key()))
        {
            report(QStringLiteral("stale"), {path, 0}, QString(),
                   QFileInfo::exists(path)
                       ? QStringLiteral("is no usable language file; make it with \"lrelease "
                                        "-idbased -nounfinished\"")
                       : QStringLiteral("is missing; make it with \"lrelease -idbased "
                                        "-nounfinished\""));
            continue;
        }
        for (auto text = language->texts.cbegin(); text != language->texts.cend(); ++text)
        {
            const QVariant found = compiled.getAllTexts(text.key()).value(language.key());
            if (found.toString() != text->text)
            {
                report(
                    QStringLiteral("stale"), {path, 0}, text.key(),
                    found.isValid()
                        ? QStringLiteral("has another text of '%1' than its language file; "
                                         "compile it anew")
                              .arg(text.key())
                        : QStringLiteral("has no text of '%1'; compile it anew, with \"-idbased\"")
                              .arg(text.key()));
            }
        }
    }
}

void TextCheck::run(const QString& compiledFolder)
{
    const QStringList urls = m_urls.keys();
    for (const QString& url : urls)
    {
        compareLanguages(url);
    }
    if (m_hasSources)
    {
        compareWithSources();
    }
    if (!compiledFolder.isEmpty())
    {
        compareWithCompiled(compiledFolder);
    }
    std::stable_sort(m_findings.begin(), m_findings.end(), [](const Finding& a, const Finding& b) {
        return a.file == b.file ? a.line < b.line : a.file < b.file;
    });
}

int TextCheck::errorCount() const
{
    return int(std::count_if(m_findings.begin(), m_findings.end(),
                             [](const Finding& finding) { return finding.isError; }));
}
