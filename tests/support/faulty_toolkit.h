#pragma once

#include <map>
#include <string>

// A toolkit in front of the host's own: its operations stand in the program, so the plug-in and the
// host's library find them first. They pass every call on, keep account of what was handed out, and
// make one chosen call fail as the operation's contract tells.
namespace faulty {

// Forgets what happened, and from now on makes that call of the operation fail, numbered from 1 (0
// for none); calls from within the host's library count too. Only that operation is counted.
void arm(const std::string& operation, long failing_call);
void disarm();

// Calls of the armed operation.
long calls();

// Texts that came to the debug channel, whose blocks are the plug-in's to lose.
int debug_texts();

// What was handed out since and has not come back, by kind: block, file, stream, layer, rectangle.
std::map<std::string, int> outstanding();

// Gives all that to the toolkit, so that a sweep does not run out of file handles.
void end_outstanding();

}  // namespace faulty
