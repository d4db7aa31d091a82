#include "core/BusAnswers.h"

#include "core/ListAnswer.h"

#include <QDBusMetaType>

namespace eventlistd
{

QDBusArgument& operator<<(QDBusArgument& argument, const RegisterAnswer& answer)
{
    argument.beginStructure();
    argument << answer.code << answer.text << answer.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, RegisterAnswer& answer)
{
    argument.beginStructure();
    argument >> answer.code >> answer.text >> answer.value;
    argument.endStructure();
    return argument;
}

void registerAnswerTypes()
{
    ListAnswer::registerTypes();
    qDBusRegisterMetaType<RegisterAnswer>();
}

} // namespace eventlistd
