#pragma once

#include "Definitions/EventlistHandlerExport.h"

#include <QString>

/// Records that modules hand to this library.
namespace EventlistHandlerStructs
{

/// What fills one placeholder of a description.
///
/// One type serves two kinds of list. In a list of arguments, `argument` is the text itself. In a
/// list of url arguments, it says where a text is to be found: a text url with a TextManager, the
/// path of a leaf with a configuration tree.
struct EVENTLISTHANDLER_EXPORT stDescriptionArgument
{
    QString placeholder; ///< as it stands in the texts, such as "%1"; not "/", not empty
    QString argument;    ///< the text, or the url or path of the text
};

} // namespace EventlistHandlerStructs
