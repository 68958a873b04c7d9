#include "commands.h"

#include <new>

#include "text.h"

namespace showbudget
{
namespace
{
constexpr int MAX_ARGUMENTS = 32;
constexpr std::string_view HELP = "help";

bool IsBlank( char c )
{
	return static_cast<unsigned char>( c ) <= ' ';
}

// Cuts the line into words in place: blanks separate, double quotes hold together and vanish. What comes after
// MAX_ARGUMENTS words stays in the last one.
int SplitLine( char *pLine, const char **ppArguments )
{
	int nArguments = 0;
	char *pRead = pLine;
	for ( ;; )
	{
		while ( *pRead && IsBlank( *pRead ) )
			pRead++;
		if ( !*pRead || nArguments == MAX_ARGUMENTS )
			return nArguments;
		char *pWrite = pRead;
		ppArguments[nArguments++] = pWrite;
		bool bQuoted = false;
		for ( ; *pRead && ( bQuoted || nArguments == MAX_ARGUMENTS || !IsBlank( *pRead ) ); pRead++ )
		{
			if ( *pRead == '"' )
				bQuoted = !bQuoted;
			else
				*pWrite++ = *pRead;
		}
		const bool bEnd = *pRead == 0;
		*pWrite = 0;
		if ( !bEnd )
			pRead++;
	}
}

bool IsName( std::string_view name )
{
	if ( name.empty() || name == HELP || name.size() >= 64 )
		return false;
	for ( const char c : name )
	{
		if ( IsBlank( c ) || c == '"' )
			return false;
	}
	return true;
}
} // namespace

bool CCommands::Register( const char *pName, const char *pHelp, CommandFunction pFunction, void *pContext )
{
	const std::string_view name = TextOrEmpty( pName );
	std::lock_guard lock( m_Mutex );
	const uint32_t nCount = m_nCommands.load( std::memory_order_relaxed );
	if ( !pFunction || !IsName( name ) || nCount == MAX_COMMANDS || Find( name ) )
		return false;
	Command &command = m_Commands[nCount];
	CopyLine( command.m_Name, name );
	CopyLine( command.m_Help, TextOrEmpty( pHelp ) );
	command.m_pFunction = pFunction;
	command.m_pContext = pContext;
	m_nCommands.store( nCount + 1, std::memory_order_release );
	return true;
}

bool CCommands::Push( std::string_view line )
{
	const uint64_t nPosition = m_nWritten.load( std::memory_order_relaxed );
	if ( nPosition - m_nRead.load( std::memory_order_acquire ) == QUEUED )
		return false;
	CopyLine( m_Lines[nPosition % QUEUED].m_Text, line );
	m_nWritten.store( nPosition + 1, std::memory_order_release );
	return true;
}

void CCommands::ForgetQueued()
{
	new ( &m_Mutex ) std::mutex;
	m_nRead.store( m_nWritten.load( std::memory_order_relaxed ), std::memory_order_relaxed );
}

void CCommands::RunQueued()
{
	// Commands that arrive meanwhile wait for the next frame, so that no console can keep a frame from ending.
	const uint64_t nEnd = m_nWritten.load( std::memory_order_acquire );
	for ( uint64_t nPosition = m_nRead.load( std::memory_order_relaxed ); nPosition != nEnd; nPosition++ )
	{
		Line line = m_Lines[nPosition % QUEUED];
		m_nRead.store( nPosition + 1, std::memory_order_release );
		RunLine( line.m_Text );
	}
}

void CCommands::RunLine( char *pLine )
{
	const char *pArguments[MAX_ARGUMENTS];
	const int nArguments = SplitLine( pLine, pArguments );
	if ( nArguments == 0 )
		return;
	if ( pArguments[0] == HELP )
		PrintHelp();
	else if ( const Command *pCommand = Find( pArguments[0] ) )
		pCommand->m_pFunction( nArguments, pArguments, pCommand->m_pContext );
	else
		PrintFormat( Severity::Warning, "Unknown command \"%s\"; \"help\" lists them.", pArguments[0] );
}

const CCommands::Command *CCommands::Find( std::string_view name ) const
{
	const uint32_t nCount = m_nCommands.load( std::memory_order_acquire );
	for ( uint32_t i = 0; i < nCount; i++ )
	{
		if ( m_Commands[i].m_Name == name )
			return &m_Commands[i];
	}
	return nullptr;
}

void CCommands::PrintHelp() const
{
	const uint32_t nCount = m_nCommands.load( std::memory_order_acquire );
	for ( uint32_t i = 0; i < nCount; i++ )
		PrintFormat( Severity::Message, "%s - %s", m_Commands[i].m_Name, m_Commands[i].m_Help );
}
} // namespace showbudget
