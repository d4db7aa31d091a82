#pragma once

/// What the tool tells its caller. Part of its interface: scripts look at these.
enum ExitCode : int
{
    success = 0,
    failed = 1,      ///< the service refused, a check found a fault, or nothing could be written
    wrongUsage = 2,  ///< the command line is wrong
    notReachable = 3 ///< the bus or the service is not there
};
