// What the sanitizers are told in every program that is built with them, however it is started. They ask for it by
// these names.
#include <sanitizer/lsan_interface.h>

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" const char *__ubsan_default_options()
{
	return "print_stacktrace=1";
}

extern "C" const char *__lsan_default_options()
{
	return "print_suppressions=0";
}

// A line names one function whose allocations live as long as the process; never a library.
extern "C" const char *__lsan_default_suppressions()
{
	// A line edit fades its clear button with an animation that nobody owns and that deletes itself at its end; the
	// program may end first.
	return "leak:QPropertyAnimation::QPropertyAnimation\n";
}
// NOLINTEND(bugprone-reserved-identifier)
