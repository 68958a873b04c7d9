#include "support/logguard.h"

#include <gtest/gtest.h>

#include <mutex>

#include "keel0/logging.h"

namespace
{
std::recursive_mutex g_Mutex;
CExpectWarnings *g_pInnermost = nullptr;

void OnLog( LoggingSeverity severity, const char *pText, void * )
{
	if ( severity != LoggingSeverity::Message )
		RecordWarning( pText );
}
} // namespace

CExpectWarnings::CExpectWarnings()
{
	std::lock_guard lock( g_Mutex );
	m_pOuter = g_pInnermost;
	g_pInnermost = this;
}

CExpectWarnings::~CExpectWarnings()
{
	std::lock_guard lock( g_Mutex );
	g_pInnermost = m_pOuter;
	for ( const std::string &text : m_Texts )
		ADD_FAILURE() << "nobody looked at the warning: " << text;
}

std::vector<std::string> CExpectWarnings::Take()
{
	std::lock_guard lock( g_Mutex );
	return std::exchange( m_Texts, {} );
}

void RecordWarning( const std::string &text )
{
	std::lock_guard lock( g_Mutex );
	if ( g_pInnermost )
		g_pInnermost->m_Texts.push_back( text );
	else
		ADD_FAILURE() << "unexpected warning: " << text;
}

void InstallLogGuard()
{
	Logging_AddListener( OnLog, nullptr );
}
