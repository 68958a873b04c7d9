#include <gmock/gmock.h>

#include <QApplication>

#include "support/logguard.h"

namespace
{
void OnQtMessage( QtMsgType type, const QMessageLogContext &, const QString &text )
{
	// The offscreen platform says so of every window that is shown, raised or grabs: that is its nature, not a defect.
	if ( text.startsWith( QLatin1String( "This plugin does not support " ) ) )
		return;
	if ( type != QtDebugMsg && type != QtInfoMsg )
		RecordWarning( "Qt: " + text.toStdString() );
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	testing::InitGoogleMock( &nArguments, ppArguments );
	if ( testing::GTEST_FLAG( list_tests ) )
		return RUN_ALL_TESTS();
	if ( qEnvironmentVariableIsEmpty( "QT_QPA_PLATFORM" ) )
		qputenv( "QT_QPA_PLATFORM", "offscreen" );
	QApplication application( nArguments, ppArguments );
	InstallLogGuard();
	qInstallMessageHandler( OnQtMessage );
	return RUN_ALL_TESTS();
}
