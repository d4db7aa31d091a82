#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QString>

namespace eventlistd
{

/// The answer to a registration: the structure (isv) of code, text and value. Code 0 is no error.
struct RegisterAnswer
{
    int code = 0;
    QString text;
    QDBusVariant value;
};

QDBusArgument& operator<<(QDBusArgument& argument, const RegisterAnswer& answer);
const QDBusArgument& operator>>(const QDBusArgument& argument, RegisterAnswer& answer);

/// Makes the types of all answers known to QtDBus. Once, before the first answer.
void registerAnswerTypes();

} // namespace eventlistd

Q_DECLARE_METATYPE(eventlistd::RegisterAnswer)
