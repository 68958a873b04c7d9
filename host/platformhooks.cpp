#include "platformhooks.h"

#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QThread>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "keel0/bufferstring.h"
#include "keel0/platform.h"

namespace
{
void SetClipboard( const char *pText )
{
	QApplication::clipboard()->setText( QString::fromUtf8( pText ) );
}

bool CanShowMessage()
{
	return qApp && QThread::currentThread() == qApp->thread() && !QApplication::startingUp() &&
		   QGuiApplication::platformName() != QLatin1String( "offscreen" );
}

void FatalError( const char *pFormat, ... )
{
	CBufferString text;
	va_list arguments;
	va_start( arguments, pFormat );
	text.AppendFormatV( pFormat, arguments );
	va_end( arguments );
	std::fputs( text.Get(), stderr );
	std::fflush( stderr );
	// An error inside the message itself must not show another one.
	static bool bShown = false;
	if ( !std::exchange( bShown, true ) && CanShowMessage() )
	{
		QMessageBox box( QMessageBox::Critical, QStringLiteral( "Tessel" ), QString::fromUtf8( text.Get() ).trimmed(),
			QMessageBox::Close );
		box.setTextFormat( Qt::PlainText );
		box.exec();
	}
	std::abort();
}
} // namespace

CPlatformHooks::CPlatformHooks()
	: m_pFatalErrorBefore( Plat_FatalErrorFunc )
{
	Plat_FatalErrorFunc = FatalError;
	Plat_SetClipboardSink( SetClipboard );
}

CPlatformHooks::~CPlatformHooks()
{
	Plat_SetClipboardSink( nullptr );
	Plat_FatalErrorFunc = m_pFatalErrorBefore;
}
