#include "tools/enginesession.h"

#ifndef ASIO_STANDALONE
#define ASIO_STANDALONE
#endif
#define ASIO_NO_DEPRECATED

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/host_name.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#pragma GCC diagnostic pop

#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "wire/chunkassembler.h"
#include "wire/controlchunks.h"
#include "wire/sessionchunks.h"

namespace
{
using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds PATIENCE{ 3 };
constexpr uint32_t MAX_HELLO_PAYLOAD = 4096;
constexpr double LONGEST = 1e9; // seconds; the clock's own numbers end later

struct FreeBlock
{
	void operator()( uint8_t *pBlock ) const { std::free( pBlock ); }
};

void AppendChunk( std::vector<uint8_t> &bytes, uint32_t nType, std::span<const uint8_t> payload )
{
	std::array<uint8_t, wire::CHUNK_HEADER_SIZE> header;
	wire::WriteChunkHeader( header, { nType, wire::CHUNK_VERSION, static_cast<uint32_t>( payload.size() ) } );
	bytes.insert( bytes.end(), header.begin(), header.end() );
	bytes.insert( bytes.end(), payload.begin(), payload.end() );
}

class CSession
{
public:
	CSession( std::string token, double flSeconds, const ChunkHandler &handler )
		: m_Token( std::move( token ) )
		, m_flSeconds( std::min( flSeconds, LONGEST ) )
		, m_Handler( handler )
	{
	}

	EngineSessionEnd Run( const EngineAddress &address )
	{
		m_Signals.async_wait(
			[this]( const asio::error_code &error, int )
			{
				if ( !error )
					Finish( m_End.m_bSampling ? "" : "interrupted" );
			} );
		WaitFor( PATIENCE, "no connection within 3 seconds" );
		m_Resolver.async_resolve( address.m_Host, std::to_string( address.m_nPort ),
			[this]( const asio::error_code &error, const asio::ip::tcp::resolver::results_type &endpoints )
			{ OnResolved( error, endpoints ); } );
		m_Context.run();
		return m_End;
	}

private:
	// Ends everything that waits; Run returns then.
	void Finish( const std::string &problem )
	{
		if ( m_bFinished )
			return;
		m_bFinished = true;
		m_End.m_Problem = problem;
		m_Context.stop();
	}

	void WaitFor( Clock::duration time, const char *pProblem )
	{
		m_Timer.expires_after( time ); // ends the wait before
		m_Timer.async_wait(
			[this, pProblem]( const asio::error_code &error )
			{
				if ( !error )
					Finish( pProblem );
			} );
	}

	void OnResolved( const asio::error_code &error, const asio::ip::tcp::resolver::results_type &endpoints )
	{
		if ( error )
			return Finish( error.message() );
		asio::async_connect( m_Socket, endpoints,
			[this]( const asio::error_code &connectError, const asio::ip::tcp::endpoint & )
			{
				if ( connectError )
					return Finish( connectError.message() );
				WaitFor( PATIENCE, "no greeting within 3 seconds" );
				asio::error_code ignored;
				// Tells within minutes that the engine's machine is gone; the session may have no other end.
				m_Socket.set_option( asio::socket_base::keep_alive( true ), ignored );
				wire::Hello hello;
				hello.m_nProcessId = static_cast<uint32_t>( getpid() );
				hello.m_Name = asio::ip::host_name( ignored );
				hello.m_Token = m_Token;
				Send( wire::CHUNK_HELLO, wire::WriteHello( hello ) );
				Receive();
			} );
	}

	// One at a time: the greeting, and after the engine's answer the request for budgets.
	void Send( uint32_t nType, std::span<const uint8_t> payload )
	{
		m_Outgoing.clear();
		AppendChunk( m_Outgoing, nType, payload );
		asio::async_write( m_Socket, asio::buffer( m_Outgoing ),
			[this]( const asio::error_code &error, size_t )
			{
				if ( error )
					Finish( error.message() );
			} );
	}

	void Receive()
	{
		m_Socket.async_read_some( asio::buffer( m_Incoming ),
			[this]( const asio::error_code &error, size_t nBytes )
			{
				if ( error )
					return Finish( error == asio::error::eof ? "the engine closed the connection" : error.message() );
				TakeBytes( std::span( m_Incoming ).first( nBytes ) );
				if ( !m_bFinished )
					Receive();
			} );
	}

	void TakeBytes( std::span<const uint8_t> bytes )
	{
		for ( ;; )
		{
			const wire::CChunkAssembler::Result result = m_Assembler.Feed( bytes );
			if ( result == wire::CChunkAssembler::Result::NeedMore )
				return;
			if ( result == wire::CChunkAssembler::Result::Refused )
				return Finish( "what answers does not speak this protocol" );
			const std::unique_ptr<uint8_t, FreeBlock> pBlock( m_Assembler.TakeBlock() );
			OnChunk( { pBlock.get() + wire::CHUNK_HEADER_SIZE, m_Assembler.Header().m_nLength } );
			if ( m_bFinished )
				return;
		}
	}

	void OnChunk( std::span<const uint8_t> payload )
	{
		const wire::ChunkHeader &header = m_Assembler.Header();
		if ( !m_End.m_bSampling )
			return OnGreeting( header, payload );
		const std::chrono::duration<double> time = Clock::now() - m_Start;
		if ( header.m_nVersion == wire::CHUNK_VERSION && !m_Handler( header, payload, time.count() ) )
			Finish( "" );
	}

	void OnGreeting( const wire::ChunkHeader &header, std::span<const uint8_t> payload )
	{
		const std::optional<wire::Hello> hello =
			header.m_nType == wire::CHUNK_HELLO && payload.size() <= MAX_HELLO_PAYLOAD ? wire::ReadHello( payload )
																					   : std::nullopt;
		if ( !hello )
			return Finish( "what answers does not speak this protocol" );
		if ( hello->m_nProtocol != wire::PROTOCOL_VERSION )
			return Finish( "the engine speaks version " + std::to_string( hello->m_nProtocol ) +
						   " of the protocol, this program version " + std::to_string( wire::PROTOCOL_VERSION ) );
		if ( !hello->m_Refusal.empty() )
			return Finish( "the engine refuses this program: " + hello->m_Refusal );
		if ( !m_Token.empty() && hello->m_Token != m_Token )
			return Finish( hello->m_Token.empty()
							   ? "the engine has no token, and this program only talks to those that "
								 "know its own"
							   : "the engine has another token than this program" );
		m_End.m_bSampling = true;
		m_Start = Clock::now();
		WaitFor( std::chrono::duration_cast<Clock::duration>( std::chrono::duration<double>( m_flSeconds ) ), "" );
		Send( wire::CHUNK_SAMPLING, wire::WriteSamplingRequest( { true, {} } ) );
	}

	const std::string m_Token;
	const double m_flSeconds;
	const ChunkHandler &m_Handler;

	asio::io_context m_Context{ 1 };
	asio::signal_set m_Signals{ m_Context, SIGINT, SIGTERM };
	asio::steady_timer m_Timer{ m_Context };
	asio::ip::tcp::resolver m_Resolver{ m_Context };
	asio::ip::tcp::socket m_Socket{ m_Context };

	std::vector<uint8_t> m_Outgoing;
	std::array<uint8_t, 65536> m_Incoming;
	wire::CChunkAssembler m_Assembler{ { std::malloc, std::free } };

	Clock::time_point m_Start;
	bool m_bFinished = false;
	EngineSessionEnd m_End;
};
} // namespace

EngineSessionEnd RunEngineSession(
	const EngineAddress &address, const std::string &token, double flSeconds, const ChunkHandler &handler )
{
	const auto pSession = std::make_unique<CSession>( token, flSeconds, handler );
	return pSession->Run( address );
}
