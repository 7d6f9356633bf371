#pragma once

namespace tool {

/// Gives up, for all threads and for good, whatever judging files does not need: a process that
/// tries to make a socket, to start a program or to fork is ended by the system, and opening a file
/// for writing or removing one is refused. What is open stays usable. False when the system cannot
/// do that, or the tool was built without libseccomp.
bool ConfineToReading();

/// Whether ConfineToReading can do anything in this build.
bool CanConfine();

}  // namespace tool
