#pragma once

#include "core/Event.h"

#include <QString>
#include <QVariantMap>

class QJsonObject;

namespace eventlistd
{

/// The sentence of a description in one language.
/// \param description  JSON text of a text object; any other text is a sentence as it stands
/// \param language     language key; empty gives the description unchanged. A language that is
///                     missing is answered with that of last resort, or with any that is there:
///                     a reader shall see something.
QString inLanguage(const QString& description, const QString& language);

/// True for the metadata of an emergency event: no scheme, and the arguments in an array. Its
/// sender had neither texts nor time to make the ordinary form.
bool isEmergencyForm(const QJsonObject& metaData);

/// Makes an ordinary event of one in the emergency form: metadata with the scheme of the service's
/// own language files, and a finished sentence for each language.
/// \param texts     the text object of the event's id; when it is empty, the id itself stands in
/// \param metaData  the emergency form
void resolveEmergency(Event& event, const QVariantMap& texts, const QJsonObject& metaData);

/// Metadata and finished sentences from a scheme and literal arguments: how the service describes
/// its own events.
/// \param scheme     language key to text with placeholders
/// \param arguments  placeholder to literal text
void describe(Event& event, const QVariantMap& scheme, const QMap<QString, QString>& arguments);

} // namespace eventlistd
