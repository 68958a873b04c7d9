#include "enginestream.h"

#include <QCoreApplication>

#include "displaytext.h"
#include "keel0/memalloc.h"

namespace
{
constexpr uint32_t MAX_HELLO_LENGTH = 4096;
constexpr int LONGEST_REFUSAL = 200; // characters of it that are shown

const wire::BlockAllocator g_BlockAllocator = {
	[]( size_t nBytes ) { return g_pMemAlloc->Alloc( nBytes ); },
	[]( void *pBlock ) { g_pMemAlloc->Free( pBlock ); },
};

QString Tr( const char *pText )
{
	return QCoreApplication::translate( "CEngineStream", pText );
}

QString Describe( uint32_t nChunkType )
{
	return QString::fromLatin1( wire::DescribeChunkType( nChunkType ).m_Text );
}

QString DescribeProblem( wire::HeaderProblem problem, const wire::ChunkHeader &header )
{
	switch ( problem )
	{
		case wire::HeaderProblem::TooLong:
			return Tr( "a chunk (%1) declares %2 bytes, the limit is %3" )
				.arg( Describe( header.m_nType ), QString::number( header.m_nLength ),
					QString::number( wire::MAX_CHUNK_LENGTH ) );
		case wire::HeaderProblem::NoMemory:
			return Tr( "there is no memory for a chunk (%1) of %2 bytes" )
				.arg( Describe( header.m_nType ), QString::number( header.m_nLength ) );
		default:
			return Tr( "a chunk header (%1) has a reserved field that is not zero" ).arg( Describe( header.m_nType ) );
	}
}
} // namespace

CEngineStream::CEngineStream( const wire::Hello &ownHello )
	: m_OwnHello( ownHello )
	, m_Assembler( g_BlockAllocator )
{
}

CEngineStream::Event CEngineStream::Feed( std::span<const uint8_t> &bytes )
{
	if ( m_Refusal != Refusal::None )
		return Event::Refused;
	const auto result = m_Assembler.Feed( bytes );
	// Of a server of another kind, what it is not says more than which of its bytes are wrong.
	if ( !m_bGreeted )
		if ( const QString problem = ProblemOfFirstChunk(); !problem.isEmpty() )
			return Refuse( Refusal::Foreign, problem );
	if ( result == wire::CChunkAssembler::Result::Refused )
		return Refuse( Refusal::Foreign, DescribeProblem( m_Assembler.Problem(), m_Assembler.Header() ) );
	if ( result == wire::CChunkAssembler::Result::NeedMore )
		return Event::NeedMore;
	return m_bGreeted ? Event::Chunk : Greet();
}

CEngineStream::Event CEngineStream::Refuse( Refusal refusal, const QString &problem )
{
	m_Refusal = refusal;
	m_Problem = problem;
	return Event::Refused;
}

// Judged as soon as its header is there: a server of another kind must not be waited for.
QString CEngineStream::ProblemOfFirstChunk() const
{
	if ( m_Assembler.Pending() < wire::CHUNK_HEADER_SIZE )
		return {};
	const wire::ChunkHeader &header = m_Assembler.Header();
	if ( header.m_nType != wire::CHUNK_HELLO )
		return Tr( "its first chunk is %1 and not 'HELO': this is no engine" ).arg( Describe( header.m_nType ) );
	if ( header.m_nLength > MAX_HELLO_LENGTH )
		return Tr( "its 'HELO' is %1 bytes long, the limit is %2" ).arg( header.m_nLength ).arg( MAX_HELLO_LENGTH );
	return {};
}

CEngineStream::Event CEngineStream::Greet()
{
	const uint32_t nLength = m_Assembler.Header().m_nLength;
	uint8_t *pBlock = m_Assembler.TakeBlock();
	const std::optional<wire::Hello> hello = wire::ReadHello( { pBlock + wire::CHUNK_HEADER_SIZE, nLength } );
	g_pMemAlloc->Free( pBlock );
	return hello ? Judge( *hello )
				 : Refuse( Refusal::Foreign, Tr( "its 'HELO' is too short (%1 bytes)" ).arg( nLength ) );
}

CEngineStream::Event CEngineStream::Judge( const wire::Hello &hello )
{
	if ( hello.m_nProtocol != m_OwnHello.m_nProtocol )
		return Refuse( Refusal::Foreign, Tr( "it speaks protocol version %1, this console speaks version %2" )
											 .arg( hello.m_nProtocol )
											 .arg( m_OwnHello.m_nProtocol ) );
	if ( !hello.m_Refusal.empty() )
		return Refuse( Refusal::TurnedAway,
			Tr( "it refuses this console: %1" )
				.arg( ToDisplayLine( QString::fromStdString( hello.m_Refusal ), LONGEST_REFUSAL ) ) );
	if ( const QString problem = ProblemOfToken( hello.m_Token ); !problem.isEmpty() )
		return Refuse( Refusal::TurnedAway, problem );
	m_PeerHello = hello;
	m_bGreeted = true;
	return Event::Greeted;
}

// A console without a token takes every engine. The texts must not hold any of the tokens.
QString CEngineStream::ProblemOfToken( const std::string &token ) const
{
	if ( m_OwnHello.m_Token.empty() || m_OwnHello.m_Token == token )
		return {};
	return token.empty() ? Tr( "it has no token, and this console only talks to engines that know its own" )
						 : Tr( "it has another token than this console" );
}
