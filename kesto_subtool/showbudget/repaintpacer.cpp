#include "showbudget/repaintpacer.h"

#include <cmath>
#include <utility>

CRepaintPacer::CRepaintPacer( std::function<void()> repaint )
	: m_Repaint( std::move( repaint ) )
{
	m_Timer.setSingleShot( true );
	m_Timer.setTimerType( Qt::PreciseTimer );
	QObject::connect( &m_Timer, &QTimer::timeout, [this] { OnTimeout(); } );
}

void CRepaintPacer::Request( double flRefreshRate )
{
	constexpr double LOWEST = 1.0;
	constexpr double HIGHEST = 1000.0;
	constexpr double USUAL = 60.0;
	if ( m_Timer.isActive() )
	{
		m_bRequested = true;
		return;
	}
	const bool bSensible = flRefreshRate >= LOWEST && flRefreshRate <= HIGHEST;
	// Rounded up: the timer counts whole milliseconds.
	m_Timer.setInterval( static_cast<int>( std::ceil( 1000.0 / ( bSensible ? flRefreshRate : USUAL ) ) ) );
	m_Timer.start();
	m_Repaint();
}

void CRepaintPacer::OnTimeout()
{
	if ( !std::exchange( m_bRequested, false ) )
		return;
	m_Timer.start();
	m_Repaint();
}
