// Runs the event loop until something is true.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

// False when it did not become true in time. The time is a safety net for a broken program and no part of any check.
template <typename Predicate>
bool WaitFor( Predicate predicate, int nMilliseconds = 20000 )
{
	const QDeadlineTimer deadline( nMilliseconds );
	QTimer wakeUp;
	wakeUp.start( 5 );
	while ( !predicate() )
	{
		if ( deadline.hasExpired() )
			return false;
		QCoreApplication::processEvents( QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents );
	}
	return true;
}

// Lets everything happen that is due now.
inline void RunEventTurns( int nTurns = 20 )
{
	for ( int i = 0; i < nTurns; i++ )
	{
		bool bDone = false;
		QTimer::singleShot( 0, [&bDone]() { bDone = true; } );
		while ( !bDone )
			QCoreApplication::processEvents( QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents );
	}
}
