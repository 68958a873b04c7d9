// Something to do in each turn of whatever event loop runs.
#pragma once

#include <QObject>
#include <QTimerEvent>
#include <functional>
#include <utility>

// Calls back in each turn of every event loop, nested ones too, with the number of the turn from 0 on. A loop that the
// callback itself starts has no turns here; what starts one goes through a queued call.
class CEventTurns final : public QObject
{
public:
	explicit CEventTurns( std::function<void( int )> onTurn )
		: m_OnTurn( std::move( onTurn ) )
	{
		startTimer( 0 );
	}

protected:
	void timerEvent( QTimerEvent * ) override { m_OnTurn( m_nTurn++ ); }

private:
	std::function<void( int )> m_OnTurn;
	int m_nTurn = 0;
};
