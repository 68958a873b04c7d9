// Keeps the leak checker from looking at what the start of an application allocates: the offscreen platform never gives
// its screen back. Everything after the start is looked at.
//
// The linker sends every construction of a QApplication in the program here (--wrap), so that neither the programs nor
// the product have to know.
#include "support/unwatchedmemory.h"

// QApplication::QApplication( int &, char **, int ), under the names that the linker gives.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" void __real__ZN12QApplicationC1ERiPPci(
	void *pApplication, int &nArguments, char **ppArguments, int nFlags );

extern "C" void __wrap__ZN12QApplicationC1ERiPPci( void *pApplication, int &nArguments, char **ppArguments, int nFlags )
{
	const CUnwatchedMemory unwatched;
	__real__ZN12QApplicationC1ERiPPci( pApplication, nArguments, ppArguments, nFlags );
}
// NOLINTEND(bugprone-reserved-identifier)
