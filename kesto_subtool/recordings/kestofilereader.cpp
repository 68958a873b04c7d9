#include "recordings/kestofilereader.h"

#include <QCoreApplication>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>
#include <algorithm>
#include <limits>

#include "recordings/hugepages.h"
#include "recordings/kestotexts.h"
#include "text/showntext.h"

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

// A file may be called anything: nothing of its name is markup, and a long one is broken into lines.
static QLabel *MakeLabel( const QString &text )
{
	constexpr int LONG_TEXT = 80; // characters
	auto *pLabel = new QLabel( BreakableText( text ) );
	pLabel->setTextFormat( Qt::PlainText );
	pLabel->setAlignment( Qt::AlignCenter );
	pLabel->setWordWrap( text.size() > LONG_TEXT );
	return pLabel;
}

void CQKestoFileReader::ReadFile( const QString &fileName )
{
	QFile file( fileName );
	if ( !file.open( QIODevice::ReadOnly ) )
		return;
	// A byte array counts its bytes with an int.
	if ( file.size() > std::numeric_limits<int>::max() - 64 )
		return ReportFailure( "The file is larger than 2 GiB" );
	ReadWhole( file );
	if ( file.error() != QFileDevice::NoError )
		return ReportFailure( file.errorString().toLocal8Bit().constData() );
	m_bGood = true;
	SetBytes( { reinterpret_cast<const uint8_t *>( m_Data.constData() ), static_cast<size_t>( m_Data.size() ) } );
}

void CQKestoFileReader::ReadWhole( QFile &file )
{
	if ( file.isSequential() || file.size() == 0 ) // pipes and the like do not tell their size
	{
		m_Data = file.readAll();
		return;
	}
	m_Data.resize( static_cast<int>( file.size() ) );
	PreferHugePages( m_Data.data(), static_cast<size_t>( m_Data.size() ) );
	m_Data.truncate( static_cast<int>( std::max<qint64>( file.read( m_Data.data(), m_Data.size() ), 0 ) ) );
}

void CQKestoFileReader::ShowDialog( QWidget *pParent, const QString &fileName )
{
	// The dialog's own setValue runs events and then goes on using the dialog, which such an event may delete. So the
	// bar is set here, and the events are run by OnProgress.
	m_pBar = new QProgressBar;
	m_pDialog =
		new QProgressDialog( QString(), QStringLiteral( "Stop" ), 0, static_cast<int>( m_Data.size() ), pParent );
	m_pDialog->setBar( m_pBar );
	m_pDialog->setLabel( MakeLabel( QStringLiteral( "Decoding " ) + ShownText( fileName ) ) );
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
	constexpr int PICTURE_INTERVAL = 40; // milliseconds
	if ( m_pBar )
	{
		// It paints itself at once when its value changes. There are more steps than anybody can see pictures.
		const bool bPaint = !m_LastPicture.isValid() || m_LastPicture.hasExpired( PICTURE_INTERVAL );
		m_pBar->setUpdatesEnabled( bPaint );
		m_pBar->setValue( static_cast<int>( nPosition ) );
		if ( bPaint )
			m_LastPicture.start();
	}
	QCoreApplication::processEvents();
}
