#include "Platform/TextManagerBase.h"

TextManagerBase::~TextManagerBase() = default;
