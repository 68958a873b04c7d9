#include "support/userloop.h"

#include <gtest/gtest.h>

#include <QApplication>

#include "support/eventturns.h"

bool CUserLoop::Run( int nTurn, const Step &happens )
{
	constexpr int MOST_TURNS = 300;
	bool bCame = false;
	const CEventTurns turns(
		[&]( int nCurrent )
		{
			if ( nCurrent == nTurn )
			{
				bCame = true;
				happens();
			}
			else
				OnTurn();
			if ( nCurrent == MOST_TURNS )
				ADD_FAILURE() << "it does not end";
			m_bAsked = m_bAsked || IsAsked();
			if ( nCurrent >= MOST_TURNS || ( m_nRunning == 0 && m_Steps.empty() && !IsAsked() ) )
				QCoreApplication::exit();
		} );
	QCoreApplication::exec();
	return bCame;
}

bool CUserLoop::IsAsked()
{
	return QApplication::activePopupWidget() || QApplication::activeModalWidget();
}

void CUserLoop::OnTurn()
{
	if ( m_Steps.empty() )
		return m_Answer();
	const Step step = std::move( m_Steps.front() );
	m_Steps.pop_front();
	m_nRunning++;
	const auto make = [this, step]
	{
		if ( step )
			step();
		m_nRunning--;
	};
	// Queued: inside a turn's own call no further turn would come.
	QMetaObject::invokeMethod( this, make, Qt::QueuedConnection );
}
