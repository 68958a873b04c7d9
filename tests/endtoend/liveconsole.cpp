#include "endtoend/liveconsole.h"

#include <QAction>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>

#include <gtest/gtest.h>

#include <cstring>

#include "endtoend/budgetwindow.h"
#include "keel0/memalloc.h"
#include "targetconnection.h"
#include "wire/chunks.h"

bool WaitUntil( const std::function<bool()> &condition )
{
	constexpr qint64 PATIENCE_MS = 120000; // for a broken program; a busy machine may need more than half a minute
	QElapsedTimer timer;
	timer.start();
	while ( !condition() )
	{
		if ( timer.hasExpired( PATIENCE_MS ) )
			return false;
		QCoreApplication::processEvents( QEventLoop::WaitForMoreEvents, 50 );
	}
	return true;
}

CLiveConsole::CLiveConsole( uint16_t nPort, const char *pSettings )
{
	CommandLineOptions options;
	options.m_Connect.push_back( { QStringLiteral( "127.0.0.1" ), nPort } );
	options.m_Open.append( QStringLiteral( "Show Budget" ) );
	options.m_SettingsFile = m_Folder.filePath( QStringLiteral( "tessel.settings" ) );
	if ( pSettings )
	{
		QFile file( options.m_SettingsFile );
		EXPECT_TRUE( file.open( QIODevice::WriteOnly ) );
		file.write( pSettings );
	}
	RegisterImages();
	m_pHost = std::make_unique<CTesselHost>( options );
	QString error;
	EXPECT_TRUE( m_pHost->Start( error ) ) << error.toStdString();
}

QMainWindow *CLiveConsole::Window() const
{
	return FindBudgetWindow();
}

QString CLiveConsole::StatusText( const QString &prefix ) const
{
	return BudgetWindowStatus( prefix );
}

int CLiveConsole::SampleCount() const
{
	return BudgetWindowSamples();
}

double CLiveConsole::FrameMilliseconds() const
{
	return StatusText( QStringLiteral( "Frame:" ) ).section( ' ', 1 ).toDouble();
}

QAction *CLiveConsole::Action( const QString &text ) const
{
	for ( QAction *pAction : Window()->findChildren<QAction *>() )
	{
		if ( pAction->text() == text )
			return pAction;
	}
	return nullptr;
}

void CLiveConsole::SendCommand( const QString &command )
{
	const QByteArray text = command.toUtf8();
	auto *pBuffer = static_cast<uint8_t *>( g_pMemAlloc->Alloc( static_cast<size_t>( text.size() ) ) );
	std::memcpy( pBuffer, text.constData(), static_cast<size_t>( text.size() ) );
	EXPECT_TRUE( m_pHost->GetCurrentConnection()->SendChunk(
		wire::CHUNK_COMMAND, wire::CHUNK_VERSION, static_cast<uint32_t>( text.size() ), pBuffer ) );
}
