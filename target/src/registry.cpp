#include "registry.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string_view>

#include "text.h"

namespace showbudget
{
namespace
{
constexpr uintptr_t BEING_REGISTERED = detail::NOT_YET - 1;

struct BudgetTable
{
	std::mutex m_Mutex; // budgets are made by constructors, never inside a scope
	std::atomic<uint32_t> m_nCount{ 1 };
	std::atomic<bool> m_bOverflow{ false };
	Budget m_Budgets[MAX_BUDGETS]{ { "Other", 110, 110, 110 } };
};

// A function's variable, because budgets are made before main, in any order.
BudgetTable &Budgets()
{
	static BudgetTable table;
	return table;
}

Site g_Sites[MAX_SITES];
std::atomic<uint32_t> g_nSites{ SITE_NONE + 1 };
std::atomic<bool> g_bSiteOverflow{ false };

std::string_view EndOfPath( std::string_view path, size_t nRoom )
{
	if ( path.size() <= nRoom )
		return path;
	path.remove_prefix( path.size() - nRoom );
	const size_t nSlash = path.find( '/' );
	return nSlash == std::string_view::npos ? path : path.substr( nSlash );
}

void Describe( Site &site, const detail::CSite &callSite )
{
	site.m_nBudget = callSite.m_pBudget ? callSite.m_pBudget->Index() : BUDGET_OTHER;
	site.m_nLine = callSite.m_nLine;
	CopyLine( site.m_Name, TextOrEmpty( callSite.m_pName ) );
	CopyLine( site.m_Function, PlainFunctionName( TextOrEmpty( callSite.m_pFunction ) ) );
	CopyLine( site.m_File, EndOfPath( TextOrEmpty( callSite.m_pFile ), sizeof( site.m_File ) - 1 ) );
	CopyLine( site.m_Project, TextOrEmpty( callSite.m_pProject ) );
	if ( !site.m_Name[0] )
		CopyLine( site.m_Name, "(no name)" );
	site.m_bReady.store( true, std::memory_order_release );
}

void DescribeOverflow()
{
	static const detail::CSite overflow( "(more scopes)", "", "", 0, nullptr, "" );
	if ( !g_bSiteOverflow.exchange( true ) )
		Describe( g_Sites[SITE_OVERFLOW], overflow );
}
} // namespace

CBudget::CBudget( const char *pName, uint8_t nRed, uint8_t nGreen, uint8_t nBlue )
	: m_nIndex( BUDGET_OTHER )
{
	Budget budget{};
	CopyLine( budget.m_Name, TextOrEmpty( pName ) );
	if ( !budget.m_Name[0] )
		CopyLine( budget.m_Name, "(no name)" );
	budget.m_nRed = nRed;
	budget.m_nGreen = nGreen;
	budget.m_nBlue = nBlue;

	BudgetTable &table = Budgets();
	std::lock_guard lock( table.m_Mutex );
	const uint32_t nCount = table.m_nCount.load( std::memory_order_relaxed );
	for ( uint32_t i = 0; i < nCount; i++ )
	{
		if ( std::strcmp( table.m_Budgets[i].m_Name, budget.m_Name ) == 0 )
		{
			m_nIndex = i;
			return;
		}
	}
	if ( nCount == MAX_BUDGETS )
	{
		table.m_bOverflow.store( true, std::memory_order_relaxed );
		return;
	}
	table.m_Budgets[nCount] = budget;
	m_nIndex = nCount;
	table.m_nCount.store( nCount + 1, std::memory_order_release );
}

uint32_t BudgetCount()
{
	return Budgets().m_nCount.load( std::memory_order_acquire );
}

bool AnyBudgetOverflowed()
{
	return Budgets().m_bOverflow.load( std::memory_order_relaxed );
}

const Budget &GetBudget( uint32_t nIndex )
{
	return Budgets().m_Budgets[nIndex];
}

uint32_t SiteCount()
{
	return std::min( g_nSites.load( std::memory_order_acquire ), SITE_OVERFLOW );
}

bool AnySiteOverflowed()
{
	return g_bSiteOverflow.load( std::memory_order_acquire );
}

const Site &GetSite( uint32_t nIndex )
{
	return g_Sites[nIndex];
}

uint64_t SiteId( uint32_t nIndex )
{
	return reinterpret_cast<uintptr_t>( &g_Sites[nIndex] );
}

uint32_t SiteOfId( uint64_t nId )
{
	const uint64_t nBytes = nId - reinterpret_cast<uintptr_t>( g_Sites );
	const uint64_t nIndex = nBytes / sizeof( Site );
	return nBytes % sizeof( Site ) == 0 && nIndex < MAX_SITES ? static_cast<uint32_t>( nIndex ) : SITE_NONE;
}

uintptr_t RegisterSite( detail::CSite &site )
{
	uintptr_t nOffset = detail::NOT_YET;
	if ( !site.m_nOffset.compare_exchange_strong( nOffset, BEING_REGISTERED, std::memory_order_acquire ) )
		return nOffset == BEING_REGISTERED ? detail::NOT_YET : nOffset;

	uint32_t nIndex = g_nSites.load( std::memory_order_relaxed );
	while ( nIndex < SITE_OVERFLOW && !g_nSites.compare_exchange_weak( nIndex, nIndex + 1, std::memory_order_acq_rel ) )
	{
	}
	if ( nIndex < SITE_OVERFLOW )
		Describe( g_Sites[nIndex], site );
	else
		DescribeOverflow();
	nOffset = nIndex * sizeof( detail::CSiteCounters );
	site.m_nOffset.store( nOffset, std::memory_order_release );
	return nOffset;
}
} // namespace showbudget
