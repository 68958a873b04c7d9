#include "keel0/logging.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "keel0/bufferstring.h"

namespace
{
struct Listener
{
	LoggingListenerFn m_pFunction;
	void *m_pContext;

	friend bool operator==( const Listener &, const Listener & ) = default;
};

struct Text
{
	LoggingSeverity m_Severity;
	std::string m_Text;
	int m_nDepth; // 0: logged by the program; n + 1: logged by a listener that was handed a text of depth n
};

// True while this thread hands texts to listeners. It then holds the mutex, so what it logs, adds or removes meanwhile
// must not lock again.
thread_local bool t_bHandingOn = false;

class CLog
{
public:
	void Add( const Listener &listener );
	void Remove( const Listener &listener );
	void Print( LoggingSeverity severity, const char *pFormat, va_list arguments );

private:
	// The lock, unless this thread has it already because a listener called back.
	std::unique_lock<std::mutex> Lock()
	{
		return t_bHandingOn ? std::unique_lock<std::mutex>() : std::unique_lock<std::mutex>( m_Mutex );
	}
	bool Has( const Listener &listener ) const
	{
		return std::find( m_Listeners.begin(), m_Listeners.end(), listener ) != m_Listeners.end();
	}
	void HandOn( const Text &text );

	std::mutex m_Mutex;
	std::vector<Listener> m_Listeners;
	std::deque<Text> m_Waiting; // logged by listeners during the present hand-on
	int m_nDepth = 0;           // of the text that is being handed on
};

// Never destroyed: destructors of static objects may log.
CLog &Log()
{
	static CLog &log = *new CLog;
	return log;
}

void CLog::Add( const Listener &listener )
{
	const auto lock = Lock();
	if ( !Has( listener ) )
		m_Listeners.push_back( listener );
}

void CLog::Remove( const Listener &listener )
{
	const auto lock = Lock();
	std::erase( m_Listeners, listener );
}

void CLog::Print( LoggingSeverity severity, const char *pFormat, va_list arguments )
{
	CBufferString formatted;
	formatted.AppendFormatV( pFormat, arguments );
	if ( t_bHandingOn )
	{
		// Two listeners that answer each other's texts would otherwise never end.
		if ( m_nDepth < LOGGING_MAX_DEPTH )
			m_Waiting.push_back( { severity, formatted.Get(), m_nDepth + 1 } );
		else
			std::fputs( formatted.Get(), stderr );
		return;
	}

	const std::lock_guard lock( m_Mutex );
	t_bHandingOn = true;
	HandOn( { severity, formatted.Get(), 0 } );
	while ( !m_Waiting.empty() )
	{
		const Text text = std::move( m_Waiting.front() );
		m_Waiting.pop_front();
		HandOn( text );
	}
	t_bHandingOn = false;
}

void CLog::HandOn( const Text &text )
{
	if ( m_Listeners.empty() )
	{
		std::fputs( text.m_Text.c_str(), stderr );
		return;
	}
	m_nDepth = text.m_nDepth;
	const std::vector<Listener> listeners = m_Listeners;
	for ( const Listener &listener : listeners )
		if ( Has( listener ) ) // one before it may have removed it
			listener.m_pFunction( text.m_Severity, text.m_Text.c_str(), listener.m_pContext );
}
} // namespace

void Msg( const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	Log().Print( LoggingSeverity::Message, pFormat, arguments );
	va_end( arguments );
}

void Warning( const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	Log().Print( LoggingSeverity::Warning, pFormat, arguments );
	va_end( arguments );
}

void Logging_Error( const char *pFormat, ... )
{
	va_list arguments;
	va_start( arguments, pFormat );
	Log().Print( LoggingSeverity::Error, pFormat, arguments );
	va_end( arguments );
}

void Logging_AddListener( LoggingListenerFn pFunction, void *pContext )
{
	if ( pFunction )
		Log().Add( { pFunction, pContext } );
}

void Logging_RemoveListener( LoggingListenerFn pFunction, void *pContext )
{
	Log().Remove( { pFunction, pContext } );
}
