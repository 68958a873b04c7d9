#include "commandline.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

#include "displaytext.h"

namespace
{
constexpr double MAX_AFTER = 86400.0;
constexpr int MIN_PICTURE_SIDE = 100;
constexpr int MAX_PICTURE_SIDE = 8192;
constexpr int LONGEST_COMPLAINT = 1000; // characters
const QString g_ShowBudget = QStringLiteral( "Show Budget" );

const char *const g_pUsage =
	R"(Usage: tessel [options] [FILE.kesto ...]

Tessel, a developer console: connects to running engine processes and shows what
they send. Recordings (.kesto) open in a window each; they need no engine.

Connections
  --connect ADDRESS    Connect to host[:port] (may be given several times). The
                       default port is 27190.
  --demo               Start the demo engine, connect to it and open Show Budget.
  --open TITLE         Open a sub-tool, such as "Show Budget", as soon as the
                       first connection is up (may be given several times).
  --token-file FILE    Talk only to engines that know the token in the first line
                       of FILE. Without it the environment decides: the token in
                       SHOWBUDGET_TOKEN, or the file in SHOWBUDGET_TOKEN_FILE.

Recordings
  --open-recording FILE  Open a recording, as FILE alone does (may be given
                       several times).
  --frame NUMBER       Show that frame first, counted from 0; "slowest" is the
                       one that took longest.

Look and settings
  --style NAME         dark, light or system.
  --settings FILE      Keep the settings in FILE and not in the user's
                       configuration folder.
  --plugin FILE        Load a sub-tool module besides those in the folder
                       "subtools" beside the program (may be given several times).

Pictures
  --screenshot FILE    Write a picture (.png) of a window to FILE and end.
  --after SECONDS      When, counted from when the connection is up (default 3).
  --what WINDOW        Of which window: budget (default), miniprofiler (its panel
                       of scopes, grouped by budget), player (of the recording)
                       or console.
  --size WIDTHxHEIGHT  In which size, in pixels at scale 1 (default 1280x860).

  -h, --help           Print this text and end.
  -v, --version        Print the version and end.
)";

class CReader
{
public:
	CReader()
	{
		m_Parser.setSingleDashWordOptionMode( QCommandLineParser::ParseAsLongOptions );
		m_Parser.addOptions( {
			{ { "h", "help" }, QString() },
			{ { "v", "version" }, QString() },
			{ "demo", QString() },
			{ "connect", QString(), "ADDRESS" },
			{ "open", QString(), "TITLE" },
			{ "open-recording", QString(), "FILE" },
			{ "frame", QString(), "NUMBER" },
			{ "style", QString(), "NAME" },
			{ "settings", QString(), "FILE" },
			{ "plugin", QString(), "FILE" },
			{ "token-file", QString(), "FILE" },
			{ "screenshot", QString(), "FILE" },
			{ "after", QString(), "SECONDS" },
			{ "what", QString(), "WINDOW" },
			{ "size", QString(), "WIDTHxHEIGHT" },
		} );
	}

	CommandLineResult Read( const QStringList &arguments )
	{
		if ( !m_Parser.parse( arguments ) )
			return Wrong( m_Parser.errorText() );
		if ( m_Parser.isSet( "help" ) )
			return { CommandLineResult::Kind::Print, QString::fromUtf8( g_pUsage ), {} };
		if ( m_Parser.isSet( "version" ) )
			return { CommandLineResult::Kind::Print, QStringLiteral( "tessel %1\n" ).arg( TESSEL_VERSION ), {} };
		ReadConnections();
		ReadTokenFile();
		ReadRecordings();
		ReadFiles();
		ReadStyle();
		ReadScreenshot();
		return m_Error.isEmpty() ? CommandLineResult{ CommandLineResult::Kind::Run, QString(), m_Options }
								 : Wrong( m_Error );
	}

private:
	static CommandLineResult Wrong( QString text )
	{
		while ( text.endsWith( '.' ) )
			text.chop( 1 );
		return { CommandLineResult::Kind::Wrong,
			QStringLiteral( "tessel: %1 (tessel --help tells what there is)" )
				.arg( ToDisplayLine( text, LONGEST_COMPLAINT ) ),
			{} };
	}

	// The first failure is the one that is told.
	void Fail( const QString &text )
	{
		if ( m_Error.isEmpty() )
			m_Error = text;
	}

	QStringList Values( const QString &option )
	{
		const QStringList values = m_Parser.values( option );
		if ( values.contains( QString() ) )
			Fail( QStringLiteral( "--%1 is given an empty value" ).arg( option ) );
		return values;
	}

	QString Value( const QString &option )
	{
		const QStringList values = Values( option );
		if ( values.size() > 1 )
			Fail( QStringLiteral( "--%1 is given more than once" ).arg( option ) );
		return values.isEmpty() ? QString() : values.last();
	}

	void ReadConnections()
	{
		m_Options.m_bDemo = m_Parser.isSet( "demo" );
		m_Options.m_Open = Values( "open" );
		for ( const QString &text : Values( "connect" ) )
		{
			QString error;
			if ( const std::optional<TargetAddress> address = ParseTargetAddress( text, error ) )
				m_Options.m_Connect.push_back( *address );
			else
				Fail( QStringLiteral( "--connect: %1" ).arg( error ) );
		}
	}

	void ReadTokenFile()
	{
		const QString file = Value( "token-file" );
		if ( !file.isEmpty() )
			m_Options.m_TokenFile = QFileInfo( file ).absoluteFilePath();
	}

	void ReadRecordings()
	{
		for ( const QString &text : Values( "open-recording" ) )
			AddRecording( text, QStringLiteral( "--open-recording" ) );
		for ( const QString &text : m_Parser.positionalArguments() )
			AddRecording( text, QStringLiteral( "unexpected argument \"%1\"" ).arg( text ) );
		ReadFrame( Value( "frame" ) );
	}

	void AddRecording( const QString &text, const QString &complaint )
	{
		const QFileInfo file( text );
		if ( !file.isFile() )
			Fail( QStringLiteral( "%1: there is no file %2" ).arg( complaint, text ) );
		m_Options.m_Recordings += file.absoluteFilePath();
	}

	void ReadFrame( const QString &text )
	{
		if ( text.isEmpty() )
			return;
		bool bNumber = true;
		m_Options.m_Frame =
			text == QLatin1String( "slowest" ) ? CommandLineOptions::SLOWEST_FRAME : text.toInt( &bNumber );
		if ( !bNumber || text.startsWith( '-' ) )
			Fail( QStringLiteral( "--frame: \"%1\" is no number of a frame, nor \"slowest\"" ).arg( text ) );
		else if ( m_Options.m_Recordings.isEmpty() )
			Fail( QStringLiteral( "--frame needs a recording" ) );
	}

	void ReadFiles()
	{
		m_Options.m_SettingsFile = Value( "settings" );
		m_Options.m_Plugins = Values( "plugin" );
		if ( QFileInfo( m_Options.m_SettingsFile ).isDir() )
			Fail( QStringLiteral( "--settings: %1 is a folder" ).arg( m_Options.m_SettingsFile ) );
	}

	void ReadStyle()
	{
		const QString name = Value( "style" );
		if ( name.isEmpty() )
			return;
		m_Options.m_Style = ParseStyleName( name );
		if ( !m_Options.m_Style )
			Fail( QStringLiteral( "--style: \"%1\" is none of dark, light, system" ).arg( name ) );
	}

	void ReadScreenshot()
	{
		m_Options.m_ScreenshotFile = Value( "screenshot" );
		const QString after = Value( "after" );
		const QString what = Value( "what" );
		const QString size = Value( "size" );
		if ( m_Options.m_ScreenshotFile.isEmpty() )
		{
			if ( !after.isEmpty() || !what.isEmpty() || !size.isEmpty() )
				Fail( QStringLiteral( "--after, --what and --size need --screenshot" ) );
			return;
		}
		ReadAfter( after );
		ReadSize( size );
		ReadSubject( what );
		CheckScreenshotFile();
		if ( m_Options.ShowsEngine() && !m_Options.m_bDemo && m_Options.m_Connect.empty() )
			Fail( QStringLiteral( "--screenshot of an engine's data needs --connect or --demo" ) );
		if ( m_Options.m_ScreenshotSubject == ScreenshotSubject::Player && m_Options.m_Recordings.isEmpty() )
			Fail( QStringLiteral( "--screenshot of the player needs a recording" ) );
	}

	void ReadSubject( const QString &text )
	{
		if ( text == QLatin1String( "console" ) )
			m_Options.m_ScreenshotSubject = ScreenshotSubject::Console;
		else if ( text == QLatin1String( "miniprofiler" ) )
			m_Options.m_ScreenshotSubject = ScreenshotSubject::MiniProfiler;
		else if ( text == QLatin1String( "player" ) )
			m_Options.m_ScreenshotSubject = ScreenshotSubject::Player;
		else if ( !text.isEmpty() && text != QLatin1String( "budget" ) )
			Fail( QStringLiteral( "--what: \"%1\" is none of budget, miniprofiler, player, console" ).arg( text ) );
	}

	void ReadAfter( const QString &text )
	{
		if ( text.isEmpty() )
			return;
		bool bNumber = false;
		m_Options.m_flScreenshotAfter = text.toDouble( &bNumber );
		if ( !bNumber || !( m_Options.m_flScreenshotAfter >= 0.0 && m_Options.m_flScreenshotAfter <= MAX_AFTER ) )
			Fail( QStringLiteral( "--after: \"%1\" is no number of seconds from 0 to %2" )
					  .arg( text, QString::number( MAX_AFTER ) ) );
	}

	void ReadSize( const QString &text )
	{
		if ( text.isEmpty() )
			return;
		const QRegularExpressionMatch match =
			QRegularExpression( QStringLiteral( "^([0-9]{1,6})x([0-9]{1,6})$" ) ).match( text );
		const QSize size( match.captured( 1 ).toInt(), match.captured( 2 ).toInt() );
		if ( size.width() < MIN_PICTURE_SIDE || size.height() < MIN_PICTURE_SIDE || size.width() > MAX_PICTURE_SIDE ||
			 size.height() > MAX_PICTURE_SIDE )
			Fail( QStringLiteral( "--size: \"%1\" is no WIDTHxHEIGHT from %2 to %3 each" )
					  .arg( text, QString::number( MIN_PICTURE_SIDE ), QString::number( MAX_PICTURE_SIDE ) ) );
		m_Options.m_ScreenshotSize = size;
	}

	void CheckScreenshotFile()
	{
		const QFileInfo file( m_Options.m_ScreenshotFile );
		if ( file.suffix().compare( QLatin1String( "png" ), Qt::CaseInsensitive ) != 0 )
			Fail( QStringLiteral( "--screenshot: %1 does not end in .png" ).arg( m_Options.m_ScreenshotFile ) );
		else if ( !QFileInfo( file.absolutePath() ).isDir() )
			Fail( QStringLiteral( "--screenshot: there is no folder %1" ).arg( file.absolutePath() ) );
	}

	QCommandLineParser m_Parser;
	CommandLineOptions m_Options;
	QString m_Error;
};
} // namespace

bool CommandLineOptions::ShowsEngine() const
{
	return m_ScreenshotSubject == ScreenshotSubject::Budget || m_ScreenshotSubject == ScreenshotSubject::MiniProfiler;
}

QStringList CommandLineOptions::SubToolsToOpen() const
{
	QStringList titles = m_Open;
	const bool bPicture = !m_ScreenshotFile.isEmpty() && ShowsEngine();
	if ( ( m_bDemo || bPicture ) && !titles.contains( g_ShowBudget, Qt::CaseInsensitive ) )
		titles += g_ShowBudget;
	return titles;
}

QString CommandLineOptions::RecordingSubTool()
{
	return g_ShowBudget;
}

CommandLineResult ParseCommandLine( const QStringList &arguments )
{
	return CReader().Read( arguments );
}
