#include "screenshot.h"

#include <QImageWriter>
#include <QPixmap>
#include <QWidget>

#include <cmath>

CScreenshot::CScreenshot(
	const QString &file, double flAfter, const QSize &size, std::function<QWidget *()> findWindow, QObject *pParent )
	: QObject( pParent )
	, m_File( file )
	, m_Size( size )
	, m_FindWindow( std::move( findWindow ) )
{
	m_Patience.setSingleShot( true );
	m_After.setSingleShot( true );
	m_After.setTimerType( Qt::PreciseTimer );
	m_After.setInterval( static_cast<int>( std::lround( flAfter * 1000.0 ) ) );
	connect( &m_Patience, &QTimer::timeout, this,
		[this]() {
			emit Failed( tr( "no picture: nothing was connected within %1 s" ).arg( m_Patience.interval() / 1000.0 ) );
		} );
	connect( &m_After, &QTimer::timeout, this, &CScreenshot::Take );
}

void CScreenshot::Wait( int nConnectPatienceMs )
{
	m_Patience.start( nConnectPatienceMs );
}

void CScreenshot::Begin()
{
	if ( std::exchange( m_bBegun, true ) )
		return;
	m_Patience.stop();
	if ( QWidget *pWindow = m_FindWindow() )
		pWindow->resize( m_Size );
	m_After.start();
}

void CScreenshot::Take()
{
	QWidget *pWindow = m_FindWindow();
	if ( !pWindow )
	{
		emit Failed( tr( "no picture: the window was not opened" ) );
		return;
	}
	QImageWriter writer( m_File );
	if ( writer.write( pWindow->grab().toImage() ) )
		emit Written( m_File );
	else
		emit Failed( tr( "no picture: cannot write %1: %2" ).arg( m_File, writer.errorString() ) );
}
