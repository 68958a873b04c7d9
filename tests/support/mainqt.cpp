#include <gmock/gmock.h>

#include <QApplication>

#include <memory>

#include "support/logguard.h"

// Of the leak checker, where the program is built with it.
extern "C" __attribute__( ( weak ) ) void __lsan_disable();
extern "C" __attribute__( ( weak ) ) void __lsan_enable();

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

// The offscreen platform never gives its screen back. What the start-up allocates is therefore not looked at;
// everything after it is.
std::unique_ptr<QApplication> MakeApplication( int &nArguments, char **ppArguments )
{
	if ( __lsan_disable )
		__lsan_disable();
	auto pApplication = std::make_unique<QApplication>( nArguments, ppArguments );
	if ( __lsan_enable )
		__lsan_enable();
	return pApplication;
}
} // namespace

int main( int nArguments, char **ppArguments )
{
	testing::InitGoogleMock( &nArguments, ppArguments );
	if ( testing::GTEST_FLAG( list_tests ) )
		return RUN_ALL_TESTS();
	if ( qEnvironmentVariableIsEmpty( "QT_QPA_PLATFORM" ) )
		qputenv( "QT_QPA_PLATFORM", "offscreen" );
	const std::unique_ptr<QApplication> pApplication = MakeApplication( nArguments, ppArguments );
	InstallLogGuard();
	qInstallMessageHandler( OnQtMessage );
	return RUN_ALL_TESTS();
}
