#include "endtoend/demoengine.h"

#include <gtest/gtest.h>

namespace
{
constexpr int PATIENCE_MS = 30000;
} // namespace

CDemoEngine::~CDemoEngine()
{
	if ( m_Process.state() != QProcess::NotRunning )
		KillAndWait();
}

void CDemoEngine::Start( uint16_t nPort )
{
	m_Process.setProcessChannelMode( QProcess::ForwardedErrorChannel );
	m_Process.start( QStringLiteral( DEMO_ENGINE ), { QStringLiteral( "--port" ), QString::number( nPort ),
														QStringLiteral( "--name" ), QStringLiteral( "end-to-end" ) } );
	while ( !m_Process.canReadLine() )
		ASSERT_TRUE( m_Process.waitForReadyRead( PATIENCE_MS ) ) << "the demo engine does not listen";
	const QString line = QString::fromUtf8( m_Process.readLine() ).trimmed();
	ASSERT_TRUE( line.startsWith( QStringLiteral( "listening on 127.0.0.1:" ) ) ) << line.toStdString();
	m_nPort = line.section( ':', -1 ).toUShort();
	ASSERT_GT( m_nPort, 0 );
}

void CDemoEngine::KillAndWait()
{
	m_Process.kill();
	EXPECT_TRUE( m_Process.waitForFinished( PATIENCE_MS ) );
}
