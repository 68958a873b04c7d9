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
		bFirst = m_Waiting.empty();
		for ( QString &line : SplitLines( text ) )
			m_Waiting.push_back( { now, severity, source, std::move( line ) } );
		// More than the model keeps need not wait: the oldest would never be seen.
		const size_t nLimit = static_cast<size_t>( m_Model.LineLimit() );
		if ( m_Waiting.size() > 2 * nLimit )
			m_Waiting.erase( m_Waiting.begin(), m_Waiting.end() - static_cast<std::ptrdiff_t>( nLimit ) );
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
	std::vector<ConsoleLine> lines;
	{
		std::lock_guard lock( m_Mutex );
		lines.swap( m_Waiting );
	}
	m_Model.Append( std::move( lines ) );
}
