// What an engine is measured by: its budgets and its call sites. Both tables only grow, so an index stays what it is,
// also when the module that declared it is unloaded.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "tablesizes.h"
#include "target/showbudget.h"

namespace showbudget
{
struct Budget
{
	char m_Name[64]; // terminated
	uint8_t m_nRed;
	uint8_t m_nGreen;
	uint8_t m_nBlue;
};

// Indices below the count are whole and never change again. At least 1: "Other".
uint32_t BudgetCount();
bool AnyBudgetOverflowed(); // some found no room and became "Other"
const Budget &GetBudget( uint32_t nIndex );

// A call site's texts, copied when it ran first: single lines, cut to their room at a UTF-8 boundary.
struct Site
{
	std::atomic<bool> m_bReady; // the rest is whole and never changes again
	uint32_t m_nBudget;
	uint32_t m_nLine;
	char m_Name[96];
	char m_Function[192]; // qualified, without return type and parameters
	char m_File[192];     // the end of a longer path
	char m_Project[32];
};

// One past the highest index in use; SITE_NONE counts. Sites below it may still be getting ready.
uint32_t SiteCount();
// The sites that found no room, and whether any site was given SITE_OVERFLOW.
bool AnySiteOverflowed();
const Site &GetSite( uint32_t nIndex );

// What the console knows a site by: never 0, the same for the life of the process.
uint64_t SiteId( uint32_t nIndex );
// The index of an id, SITE_NONE when there is none such.
uint32_t SiteOfId( uint64_t nId );

// Gives the site its place. NOT_YET while another thread is doing that right now. Lock-free, allocates nothing.
uintptr_t RegisterSite( detail::CSite &site );

// "world::CBody::Step" of "virtual void world::CBody::Step(float) const [with T = int]". Exposed for tests.
std::string_view PlainFunctionName( std::string_view pretty );
} // namespace showbudget
