#include "tools/convert/threadtable.h"

#include "tools/convert/text.h"

namespace convert
{
static constexpr size_t MAX_ID_BYTES = 64;
static constexpr size_t MAX_LABEL_BYTES = 256;

uint32_t CThreadTable::Find( std::string_view process, std::string_view thread )
{
	process = process.substr( 0, MAX_ID_BYTES );
	thread = thread.substr( 0, MAX_ID_BYTES );
	if ( m_nLast < Count() && m_Threads[m_nLast].m_Id == thread && m_Threads[m_nLast].m_Process == process )
		return m_nLast;
	m_Key.assign( process ).append( 1, '\0' ).append( thread );
	const auto it = m_Index.find( m_Key );
	if ( it != m_Index.end() )
		return m_nLast = it->second;
	if ( m_Threads.size() >= MAX_THREADS )
		return m_nLast = Count() - 1;
	m_nLast = Count();
	m_Index.emplace( m_Key, m_nLast );
	Thread &added = m_Threads.emplace_back();
	added.m_Process = process;
	added.m_Id = thread;
	return m_nLast;
}

void CThreadTable::NameProcess( std::string_view process, std::string_view name )
{
	if ( m_ProcessNames.size() < MAX_THREADS )
		m_ProcessNames[std::string( process.substr( 0, MAX_ID_BYTES ) )] = CutUtf8( name, MAX_LABEL_BYTES );
}

std::string_view CThreadTable::ProcessName( const std::string &process ) const
{
	const auto it = m_ProcessNames.find( process );
	return it == m_ProcessNames.end() ? std::string_view() : it->second;
}

std::string CThreadTable::Label( uint32_t nThread, bool bWithProcess ) const
{
	const Thread &thread = m_Threads[nThread];
	std::string label;
	if ( bWithProcess )
	{
		const std::string_view name = ProcessName( thread.m_Process );
		label.append( name.empty() ? "process" : name ).append( " " ).append( thread.m_Process ).append( ": " );
	}
	label.append( thread.m_Name.empty() ? "thread" : CutUtf8( thread.m_Name, MAX_LABEL_BYTES ) );
	return label.append( " " ).append( thread.m_Id );
}
} // namespace convert
