#include "consolelog.h"

#include "displaytext.h"

namespace
{
constexpr int FLUSH_INTERVAL_MS = 25;

void OnKeel0Log( LoggingSeverity severity, const char *pText, void *pContext )
{
	static_cast<CConsoleLog *>( pContext )->Add( severity, QString(), QString::fromUtf8( pText ) );
}
} // namespace

CConsoleLog::CConsoleLog( CConsoleModel &model, QObject *pParent )
	: QObject( pParent )
	, m_Model( model )
	, m_Waiting( model.LineLimit() )
{
	m_FlushTimer.setSingleShot( true );
	m_FlushTimer.setInterval( FLUSH_INTERVAL_MS );
	connect( &m_FlushTimer, &QTimer::timeout, this, &CConsoleLog::Flush );
	Logging_AddListener( OnKeel0Log, this );
}

CConsoleLog::~CConsoleLog()
{
	Logging_RemoveListener( OnKeel0Log, this );
}

void CConsoleLog::Add( LoggingSeverity severity, const QString &source, const QString &text )
{
	const QTime now = QTime::currentTime();
	bool bFirst = false;
	{
		std::lock_guard lock( m_Mutex );
		bFirst = m_Waiting.Count() == 0;
		for ( const QString &line : SplitLines( text ) )
			m_Waiting.Add( { now, severity, source, CutWithEllipsis( line, ConsoleLine::LONGEST_TEXT ) } );
	}
	if ( bFirst )
		QMetaObject::invokeMethod( this, &CConsoleLog::ScheduleFlush, Qt::AutoConnection );
}

void CConsoleLog::ScheduleFlush()
{
	if ( !m_FlushTimer.isActive() )
		m_FlushTimer.start();
}

void CConsoleLog::Flush()
{
	m_FlushTimer.stop();
	CNewestLines lines( m_Model.LineLimit() );
	{
		std::lock_guard lock( m_Mutex );
		std::swap( lines, m_Waiting );
	}
	m_Model.Append( std::move( lines ) );
}
