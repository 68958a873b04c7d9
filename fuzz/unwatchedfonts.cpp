// Keeps the leak checker from looking at what the font library finds. Whenever a text has a character that its font
// lacks, another one is looked for, and what is found stays as long as the application; but the library keeps it as
// distances instead of addresses, which the leak checker, asked after every input, takes for lost.
#include <dlfcn.h>

#include <cstdlib>

#include "support/unwatchedmemory.h"

// In front of the library's own, for whoever is loaded.
extern "C" [[gnu::visibility( "default" )]] void *FcFontMatch( void *pConfig, void *pPattern, int *pResult )
{
	using FontMatch = void *(*)( void *, void *, int * );
	static const auto s_pFontMatch = []
	{
		void *pLibrary = dlopen( "libfontconfig.so.1", RTLD_LAZY );
		void *pSymbol = pLibrary ? dlsym( pLibrary, "FcFontMatch" ) : nullptr;
		if ( !pSymbol )
			std::abort();
		return reinterpret_cast<FontMatch>( pSymbol );
	}();
	const CUnwatchedMemory unwatched;
	return s_pFontMatch( pConfig, pPattern, pResult );
}
