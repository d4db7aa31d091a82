#include "Platform/ErrorContainer.h"

int ErrorContainer::getDefaultErrorCode()
{
    return 1;
}
