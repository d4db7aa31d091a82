#pragma once

#include <QStringList>

namespace eventlistd
{

struct Event;

/// Makes a text one that the database gives back as it got it. SQLite keeps texts as UTF-8 and gets
/// them as UTF-16: it takes a byte order mark from the front of a text, or turns the whole text
/// round for one; it joins half a surrogate pair with whatever follows; and it reads U+FFFE and
/// U+FFFF as U+FFFD. Two alarms with different ids would then be one row.
///
/// Byte order marks at the front go, what is no character becomes U+FFFD.
QString storable(const QString& text);

/// The same of each element.
QStringList storable(const QStringList& texts);

/// The same of each text of an event.
void makeStorable(Event& event);

} // namespace eventlistd
