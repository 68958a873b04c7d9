// What a console sends to an engine, against a slow reader that shares no code with the session: both must agree on
// every byte of the answers, on what is wanted, on the commands that run, and on when the conversation is over.
//
// The first byte of an input chooses the engine and the cuts, the rest is the stream. Ids below 16 in a 'KMPN' stand
// for the call sites with that index, whose real ids are addresses.
#include <unistd.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "memorylimit.h"
#include "require.h"
#include "target/showbudget.h"
#include "target/src/engine.h"
#include "target/src/log.h"
#include "target/src/registry.h"
#include "target/src/server.h"

namespace
{
using showbudget::CConsoleSession;
using State = CConsoleSession::State;
using Bytes = std::vector<uint8_t>;

const std::string TOKEN = "open";
constexpr size_t LONGEST_INPUT = 65536; // the answers to more would not fit into a session's queue
constexpr size_t MAX_WAITING_COMMANDS = 16;
constexpr unsigned WANT_SAMPLES = 1;
constexpr unsigned WANT_PROFILES = 2;

SHOWBUDGET_BUDGET( g_Budget, "Fuzz", 1, 2, 3 );
showbudget::detail::CSite g_Sites[] = { { "first", "void One()", "a.cpp", 7, &g_Budget, "game" },
	{ "second", "int space::Two(int)", "b/b.cpp", 12345, &g_Budget, "" } };

// The call sites' texts as a console is told them.
const std::string DESCRIPTIONS[] = { "Fuzz\nOne\na.cpp\n7\ngame\n", "Fuzz\nspace::Two\nb/b.cpp\n12345\n\n" };
const std::string NAMES[] = { "first", "second" };
constexpr uint64_t SITES = 2;

std::vector<std::vector<std::string>> g_Calls;

void Big( Bytes &out, uint64_t nValue, int nBytes )
{
	for ( int i = nBytes - 1; i >= 0; i-- )
		out.push_back( static_cast<uint8_t>( nValue >> 8 * i ) );
}

void Little( Bytes &out, uint64_t nValue, int nBytes )
{
	for ( int i = 0; i < nBytes; i++ )
		out.push_back( static_cast<uint8_t>( nValue >> 8 * i ) );
}

void Text( Bytes &out, const std::string &text )
{
	out.insert( out.end(), text.begin(), text.end() );
}

void AppendChunk( Bytes &out, const char *pType, const Bytes &payload )
{
	Text( out, pType );
	Big( out, 2, 2 );
	Big( out, 0, 2 );
	Big( out, payload.size(), 4 );
	out.insert( out.end(), payload.begin(), payload.end() );
}

// What the session must have done with a stream. It also puts the real ids into the stream.
class CSlowReader
{
public:
	CSlowReader( Bytes &stream, bool bToken, bool bCommands )
		: m_Stream( stream )
		, m_bToken( bToken )
		, m_bCommands( bCommands )
	{
		while ( m_State == State::Greeting || m_State == State::Open )
		{
			if ( !ReadHeader() )
				return;
			if ( m_State == State::Over || m_Stream.size() - m_nAt - 12 < m_nLength )
				return;
			m_nAt += 12;
			ReadPayload();
			m_nAt += m_nLength;
		}
	}

	Bytes m_Answers;
	State m_State = State::Greeting;
	unsigned m_nWanted = 0;
	std::vector<std::string> m_Commands;
	std::vector<uint64_t> m_NamesWanted; // with the next frame

	void ExpectNames( Bytes &payload, const std::vector<uint64_t> &sites )
	{
		Bytes names;
		Little( names, 0, 8 ); // the server's clock was never compared
		Little( names, sites.size(), 4 );
		for ( const uint64_t nSite : sites )
		{
			Little( names, showbudget::SiteId( static_cast<uint32_t>( nSite ) ), 8 );
			Little( names, 0, 8 );
			Text( names, NAMES[nSite - 1] + '\0' + DESCRIPTIONS[nSite - 1] + '\0' );
		}
		Little( payload, 1, 4 );
		Little( payload, payload.size() + 4 + names.size(), 4 );
		payload.insert( payload.end(), names.begin(), names.end() );
	}

private:
	uint64_t Number( size_t nAt, size_t nBytes ) const
	{
		uint64_t nValue = 0;
		for ( size_t i = 0; i < nBytes; i++ )
			nValue = nValue * 256 + m_Stream.at( nAt + i );
		return nValue;
	}
	std::string TextAt( size_t nBegin ) const // up to the end of the payload
	{
		const auto pBegin = m_Stream.begin() + static_cast<ptrdiff_t>( nBegin );
		return { pBegin, m_Stream.begin() + static_cast<ptrdiff_t>( m_nAt + m_nLength ) };
	}

	// False when there is none yet.
	bool ReadHeader()
	{
		if ( m_Stream.size() - m_nAt < 12 )
			return false;
		m_Type = std::string( m_Stream.begin() + static_cast<ptrdiff_t>( m_nAt ),
			m_Stream.begin() + static_cast<ptrdiff_t>( m_nAt + 4 ) );
		m_nLength = Number( m_nAt + 8, 4 );
		const bool bGreeting = m_State == State::Greeting;
		if ( Number( m_nAt + 6, 2 ) != 0 || Number( m_nAt + 4, 2 ) != 2 || ( bGreeting && m_Type != "HELO" ) ||
			 m_nLength > ( bGreeting ? 4096 : 1048576 ) )
			m_State = State::Over;
		return true;
	}

	void ReadPayload()
	{
		if ( m_State == State::Greeting )
			ReadHello();
		else if ( m_Type == "KSTO" )
			ReadSampling();
		else if ( m_Type == "KMPC" )
			ReadControl();
		else if ( m_Type == "KMPN" )
			ReadNames();
		else if ( m_Type == "CMND" )
			ReadCommand();
	}

	void ReadHello()
	{
		if ( m_nLength < 16 )
		{
			m_State = State::Over;
			return;
		}
		const uint64_t nVersion = Number( m_nAt, 4 );
		const std::string texts = TextAt( m_nAt + 16 );
		const size_t nName = texts.find( '\0' );
		const std::string rest = nName == texts.npos ? "" : texts.substr( nName + 1 );
		const std::string token = rest.substr( 0, rest.find( '\0' ) );

		std::string answer = "fuzz engine";
		if ( nVersion != 2 )
			Refuse( answer,
				"the console speaks protocol version " + std::to_string( nVersion ) + ", this engine version 2" );
		else if ( m_bToken && token != TOKEN )
			Refuse( answer, token.empty() ? "token required" : "wrong token" );
		else
		{
			m_State = State::Open;
			if ( m_bToken )
				answer += '\0' + TOKEN;
		}
		Bytes payload;
		Big( payload, 2, 4 );
		Big( payload, static_cast<uint64_t>( getpid() ), 4 );
		Big( payload, 0, 8 );
		Text( payload, answer );
		AppendChunk( m_Answers, "HELO", payload );
	}

	void Refuse( std::string &answer, const std::string &reason )
	{
		m_State = State::Refused;
		answer += std::string( 2, '\0' ) + reason;
	}

	void ReadSampling()
	{
		if ( m_nLength < 3 )
		{
			m_State = State::Over;
			return;
		}
		const bool bStart = m_Stream.at( m_nAt ) != 0;
		m_nWanted = bStart ? m_nWanted | WANT_SAMPLES : m_nWanted & ~WANT_SAMPLES;
		if ( !bStart )
			return;
		Bytes payload;
		Big( payload, 2, 4 );
		Text( payload, "Fuzz" + std::string( 60, '\0' ) + "\1\2\3" + '\0' );
		Text( payload, "Other" + std::string( 59, '\0' ) + "nnn" + '\0' ); // grey: 110, 110, 110
		AppendChunk( m_Answers, "PCAT", payload );
	}

	void ReadControl()
	{
		if ( m_nLength < 8 )
		{
			m_State = State::Over;
			return;
		}
		const bool bWanted = m_Stream.at( m_nAt + 4 ) != 0;
		m_nWanted = bWanted ? m_nWanted | WANT_PROFILES : m_nWanted & ~WANT_PROFILES;
		SendNames();
	}

	void ReadNames()
	{
		for ( size_t i = 0; i < m_nLength / 8; i++ )
		{
			const size_t nAt = m_nAt + 8 * i;
			uint64_t nSite = 0;
			for ( size_t n = 8; n-- > 0; )
				nSite = nSite << 8 | m_Stream.at( nAt + n );
			if ( nSite >= 16 )
				continue;
			Bytes id;
			Little( id, showbudget::SiteId( static_cast<uint32_t>( nSite ) ), 8 );
			std::copy( id.begin(), id.end(), m_Stream.begin() + static_cast<ptrdiff_t>( nAt ) );
			if ( nSite > 0 && nSite <= SITES && std::ranges::find( m_NamesWanted, nSite ) == m_NamesWanted.end() )
				m_NamesWanted.push_back( nSite );
		}
		SendNames();
	}

	void SendNames()
	{
		if ( ( m_nWanted & WANT_PROFILES ) || m_NamesWanted.empty() )
			return;
		Bytes payload;
		Little( payload, 0, 8 );
		ExpectNames( payload, m_NamesWanted );
		AppendChunk( m_Answers, "PMPF", payload );
		m_NamesWanted.clear();
	}

	void ReadCommand()
	{
		if ( m_nLength > 4096 )
			m_State = State::Over;
		else if ( !m_bCommands )
			ExpectWarning( "This engine takes no commands; they are turned on with Settings::m_bCommands where it "
						   "calls showbudget::Start().\n" );
		else if ( m_Commands.size() == MAX_WAITING_COMMANDS )
			ExpectWarning( "The engine is busy; it did not get the command.\n" );
		else
			m_Commands.push_back( TextAt( m_nAt ) );
	}

	void ExpectWarning( const std::string &line )
	{
		Bytes payload;
		Big( payload, 1, 4 );
		Text( payload, line );
		AppendChunk( m_Answers, "PRNT", payload );
	}

	Bytes &m_Stream;
	const bool m_bToken;
	const bool m_bCommands;
	size_t m_nAt = 0;
	std::string m_Type;
	uint64_t m_nLength = 0;
};

// The words of a command line, taken as the guide says: blanks separate, quotes hold together, the 32nd word takes the
// rest, and nothing counts behind a NUL.
std::vector<std::string> Words( const std::string &line )
{
	std::vector<std::string> words;
	bool bInWord = false;
	bool bQuoted = false;
	for ( const char c : line.substr( 0, line.find( '\0' ) ) )
	{
		const auto nByte = static_cast<unsigned char>( c );
		const bool bBlank = nByte <= 0x20 || nByte == 0x7F;
		const bool bLast = bInWord && words.size() == 32;
		if ( bBlank && !bQuoted && !bLast )
		{
			bInWord = false;
			continue;
		}
		if ( !bInWord )
			words.emplace_back();
		bInWord = true;
		if ( c == '"' )
			bQuoted = !bQuoted;
		else
			words.back() += bBlank ? ' ' : c;
	}
	return words;
}

// A server that never starts: it judges greetings and takes commands.
showbudget::ISessionOwner &Engine( bool bToken, bool bCommands )
{
	static std::unique_ptr<showbudget::CServer> s_Engines[2][2];
	std::unique_ptr<showbudget::CServer> &pServer = s_Engines[bToken][bCommands];
	if ( !pServer )
	{
		showbudget::SetLog( []( showbudget::Severity, const char *, void * ) {}, nullptr );
		showbudget::Settings settings;
		settings.m_pName = "fuzz engine";
		settings.m_bCommands = bCommands;
		pServer = std::make_unique<showbudget::CServer>( settings, bToken ? TOKEN : std::string() );
	}
	return *pServer;
}

void Drain( CConsoleSession &session, Bytes &answers )
{
	Bytes taken;
	while ( session.TakeQueued( taken ) )
	{
		answers.insert( answers.end(), taken.begin(), taken.end() );
		session.OnSent();
	}
}

// Two frames: the first is where a tick's beginning got lost, the second where a scope did not run.
void CheckFrames( CConsoleSession &session, CSlowReader &reader )
{
	constexpr uint64_t CALLS = 3;
	constexpr uint64_t TICKS = 500;
	constexpr uint64_t SERVICE = 77;
	const showbudget::FrameEntry entry{ 1, 2, TICKS, CALLS };
	const uint32_t values[] = { 40, 2 };
	for ( const bool bFirst : { true, false } )
	{
		showbudget::Frame frame{};
		frame.m_Header.m_nBudgets = 2;
		frame.m_Header.m_nSites = SITES + 1;
		frame.m_Header.m_bEntries = 1;
		frame.m_Header.m_nServiceTicks = SERVICE;
		if ( bFirst )
			frame.m_Entries = { &entry, 1 };
		session.SendFrame( { frame, values, 60.0f } );

		Bytes expected;
		if ( reader.m_nWanted & WANT_SAMPLES )
		{
			Bytes payload;
			Big( payload, 2, 4 );
			Big( payload, bFirst ? 1 : 0, 4 );
			Big( payload, 0x42700000, 4 ); // 60.0
			Big( payload, 40, 4 );
			Big( payload, 2, 4 );
			AppendChunk( expected, "PCPU", payload );
		}
		if ( reader.m_nWanted & WANT_PROFILES )
		{
			Bytes payload;
			Little( payload, SERVICE, 8 );
			Little( payload, 0, 4 );
			Little( payload, 8 + 8 + 24 + 36, 4 );
			Text( payload, "1SMK" );
			Little( payload, 1, 4 );
			Little( payload, 0, 8 );
			Little( payload, SITES, 4 );
			Little( payload, 1, 4 );
			Little( payload, 0, 4 );
			Little( payload, showbudget::SiteId( 1 ), 8 );
			Little( payload, bFirst ? showbudget::SiteId( 2 ) : 0, 8 );
			Little( payload, bFirst ? TICKS : 0, 8 );
			Little( payload, bFirst ? CALLS : 0, 8 );
			if ( !reader.m_NamesWanted.empty() )
				reader.ExpectNames( payload, reader.m_NamesWanted );
			reader.m_NamesWanted.clear();
			AppendChunk( expected, "PMPF", payload );
		}
		Bytes sent;
		Drain( session, sent );
		Require( sent == expected, "a frame is sent as it was asked for" );
	}
}

void CheckCommands( const CSlowReader &reader )
{
	g_Calls.clear();
	showbudget::g_Engine.m_Commands.Run();
	std::vector<std::vector<std::string>> expected;
	for ( const std::string &line : reader.m_Commands )
	{
		std::vector<std::string> words = Words( line );
		if ( !words.empty() && words[0] == "echo" )
			expected.push_back( std::move( words ) );
	}
	Require( g_Calls == expected, "commands run with their words, in order" );
}

void Prepare()
{
	static bool s_bPrepared = false;
	if ( std::exchange( s_bPrepared, true ) )
		return;
	for ( showbudget::detail::CSite &site : g_Sites )
		showbudget::RegisterSite( site );
	const auto echo = []( int nArguments, const char *const *ppArguments, void * )
	{ g_Calls.emplace_back( ppArguments, ppArguments + nArguments ); };
	Require( showbudget::RegisterCommand( "echo", "", echo, nullptr ), "the command is registered" );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *pData, size_t nSize )
{
	if ( nSize == 0 || nSize > LONGEST_INPUT )
		return 0;
	Prepare();
	constexpr size_t PIECES[] = { LONGEST_INPUT, 1, 7, 100 };
	const bool bToken = pData[0] & 1;
	const bool bCommands = pData[0] & 2;
	const bool bDrainOften = pData[0] & 4;
	const size_t nPiece = PIECES[pData[0] >> 3 & 3];
	Bytes stream( pData + 1, pData + nSize );
	CSlowReader reader( stream, bToken, bCommands );

	CConsoleSession session( "console", Engine( bToken, bCommands ) );
	Bytes answers;
	for ( size_t nAt = 0; nAt < stream.size(); nAt += nPiece )
	{
		const CMemoryLimit limit( nSize );
		session.OnBytes( std::span( stream ).subspan( nAt, std::min( nPiece, stream.size() - nAt ) ) );
		if ( bDrainOften )
			Drain( session, answers );
	}
	Drain( session, answers );
	Require( answers == reader.m_Answers, "the answers are those that the stream asks for" );
	Require( session.GetState() == reader.m_State, "the conversation goes on or is over as it must" );
	const bool bOpen = reader.m_State == State::Open;
	Require( session.EndReason().empty() == ( bOpen || reader.m_State == State::Greeting ), "an end has a reason" );
	if ( !bOpen )
		reader.m_nWanted = 0;
	Require( session.Wanted() == reader.m_nWanted, "what is wanted is what was asked for" );
	CheckFrames( session, reader );
	CheckCommands( reader );
	return 0;
}
