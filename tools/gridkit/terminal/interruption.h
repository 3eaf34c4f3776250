#pragma once

#include <exception>

// Ending in good order when the user, or the machine, wants the program to stop: SIGINT, SIGTERM
// and SIGHUP only leave a mark, work that leaves files looks at it now and then and ends by an
// exception, and what is half done is removed on the way out. A second signal of the same kind ends
// the program at once, as if it were not watched for, and leaves the temporary file that was being
// written; one of another kind only leaves the mark once more.

// Thrown where the mark is found. It is none of the errors that are told to the user.
class Interrupted : public std::exception {
 public:
  const char* what() const noexcept override { return "interrupted"; }
};

// From now on the three signals leave the mark. A signal that is ignored stays ignored. Writing
// past the limit on file sizes becomes an error of the write instead of a signal.
void watch_for_interruption();

bool is_interrupted();

// Throws Interrupted when the mark is there.
void stop_if_interrupted();

// Ends the program by the signal that left the mark, as its parent expects.
[[noreturn]] void end_by_signal();
