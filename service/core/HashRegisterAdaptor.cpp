#include "core/HashRegisterAdaptor.h"

#include "core/BusAnswers.h"
#include "core/BusObject.h"
#include "core/EventlistService.h"

namespace eventlistd
{

HashRegisterAdaptor::HashRegisterAdaptor(BusObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_object(*object), m_service(service)
{
}

QDBusVariant HashRegisterAdaptor::registerEventHash(const QString& hash)
{
    using Result = HashRegister::Result;
    // A structure holds a value also when there is nothing to tell.
    RegisterAnswer answer{0, QString(), QDBusVariant(QString())};
    const Result result = m_service.senders().admitEvent(m_object.caller())
                              ? m_service.registerHash(hash)
                              : Result::full;
    if (result == Result::invalid)
    {
        answer.code = 1;
        answer.text = QStringLiteral("A hash consists of A-Z, a-z, 0-9 and _");
    }
    else if (result == Result::full)
    {
        answer.code = 2;
        answer.text = QStringLiteral("No further hash can be registered");
    }
    else if (result == Result::failed)
    {
        answer.code = 3;
        answer.text = QStringLiteral("The database takes nothing");
    }
    return QDBusVariant(QVariant::fromValue(answer));
}

} // namespace eventlistd
