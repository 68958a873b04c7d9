// Gives the base library the desktop's clipboard and a fatal error that the user can read.
#pragma once

// While it lives Plat_SetClipboardText fills the desktop's clipboard and Plat_FatalErrorFunc prints, shows a message
// where there is a screen, and aborts. What was set before comes back at the end.
class CPlatformHooks
{
public:
	CPlatformHooks();
	~CPlatformHooks();
	CPlatformHooks( const CPlatformHooks & ) = delete;
	CPlatformHooks &operator=( const CPlatformHooks & ) = delete;

private:
	void ( *m_pFatalErrorBefore )( const char *pFormat, ... );
};
