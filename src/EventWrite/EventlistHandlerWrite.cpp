#include "EventWrite/EventlistHandlerWrite.h"

EventlistHandlerWrite::EventlistHandlerWrite(QObject* parent) : QObject(parent), m_connector(false)
{
}

EventlistHandlerWrite::~EventlistHandlerWrite() = default;

void EventlistHandlerWrite::deleteEventlist()
{
    m_connector.deleteEventlist();
}

void EventlistHandlerWrite::suppressEventProcessing()
{
    m_connector.suppressEventProcessing(true);
}
