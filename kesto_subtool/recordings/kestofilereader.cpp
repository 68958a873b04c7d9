#include "recordings/kestofilereader.h"

#include <QCoreApplication>
#include <QFile>
#include <QProgressBar>
#include <QProgressDialog>
#include <limits>

CQKestoFileReader::CQKestoFileReader( QWidget *pParent, const QString &fileName )
{
	m_bGood = false;
	ReadFile( fileName );
	if ( m_bGood )
		ShowDialog( pParent, fileName );
}

CQKestoFileReader::~CQKestoFileReader()
{
	delete m_pDialog;
}

void CQKestoFileReader::ReadFile( const QString &fileName )
{
	QFile file( fileName );
	if ( !file.open( QIODevice::ReadOnly ) )
		return;
	// A byte array counts its bytes with an int.
	if ( file.size() > std::numeric_limits<int>::max() - 64 )
		return ReportFailure( "The file is larger than 2 GiB" );
	m_Data = file.readAll();
	if ( file.error() != QFileDevice::NoError )
		return ReportFailure( file.errorString().toLocal8Bit().constData() );
	m_bGood = true;
	SetBytes( { reinterpret_cast<const uint8_t *>( m_Data.constData() ), static_cast<size_t>( m_Data.size() ) } );
}

void CQKestoFileReader::ShowDialog( QWidget *pParent, const QString &fileName )
{
	// The dialog's own setValue runs events and then goes on using the dialog, which such an event may delete. So the
	// bar is set here, and the events are run by OnProgress.
	m_pBar = new QProgressBar;
	m_pDialog = new QProgressDialog( QStringLiteral( "Decoding " ) + fileName, QStringLiteral( "Stop" ), 0,
		static_cast<int>( m_Data.size() ), pParent );
	m_pDialog->setBar( m_pBar );
	m_pDialog->setRange( 0, static_cast<int>( m_Data.size() ) );
	m_pDialog->setMinimumDuration( 0 );
	m_pDialog->setModal( true );
	m_pDialog->show();
}

bool CQKestoFileReader::IsCancelled()
{
	return !m_pDialog || m_pDialog->wasCanceled();
}

void CQKestoFileReader::OnProgress( int64_t nPosition )
{
	if ( m_pBar )
		m_pBar->setValue( static_cast<int>( nPosition ) );
	QCoreApplication::processEvents();
}
