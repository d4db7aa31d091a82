#include "Definitions/EventlistHandlerEnums.h"

EventlistHandlerEnums::EventlistHandlerEnums(QObject* parent) : QObject(parent) {}

EventlistHandlerEnums::~EventlistHandlerEnums() = default;
