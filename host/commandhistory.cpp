#include "commandhistory.h"

void CCommandHistory::Add( const QString &command )
{
	m_nStepsBack = 0;
	m_Draft.clear();
	if ( !m_Commands.isEmpty() && m_Commands.last() == command )
		return;
	m_Commands.append( command );
	if ( m_Commands.size() > LIMIT )
		m_Commands.removeFirst();
}

QString CCommandHistory::Older( const QString &draft )
{
	if ( m_Commands.isEmpty() )
		return draft;
	if ( m_nStepsBack == 0 )
		m_Draft = draft;
	m_nStepsBack = qMin( m_nStepsBack + 1, m_Commands.size() );
	return m_Commands[m_Commands.size() - m_nStepsBack];
}

QString CCommandHistory::Newer( const QString &draft )
{
	if ( m_nStepsBack == 0 )
		return draft;
	m_nStepsBack--;
	return m_nStepsBack == 0 ? m_Draft : m_Commands[m_Commands.size() - m_nStepsBack];
}
