#include "recordings/kestofile.h"

#include <algorithm>

#include "recordings/kestofileparser.h"

static bool IsNode( int32_t nNode )
{
	return nNode >= 0 && nNode < wire::RECORDING_MAX_NODES;
}

CKestoFile::CKestoFile( CReader &reader )
{
	CKestoFileParser( *this, reader ).Parse();
}

CKestoFile::~CKestoFile() = default;

void CKestoFile::Release()
{
	if ( m_nReferences.fetch_sub( 1, std::memory_order_acq_rel ) == 1 )
		delete this;
}

CKestoFile::CTickTimings *CKestoFile::GetFrame( int nFrame ) const
{
	return nFrame >= 0 && nFrame < GetFrameCount() ? m_Frames[static_cast<size_t>( nFrame )].Get() : nullptr;
}

const CKestoFile::Node &CKestoFile::GetNode( int32_t nNode ) const
{
	static const Node NONE;
	return IsNode( nNode ) ? m_Nodes[nNode] : NONE;
}

const char *CKestoFile::GetNodeName( int32_t nNode ) const
{
	return GetNode( nNode ).m_pName;
}

int32_t CKestoFile::GetNodeParent( int32_t nNode ) const
{
	return GetNode( nNode ).m_nParent;
}

int32_t CKestoFile::GetNodeFirstChild( int32_t nNode ) const
{
	return GetNode( nNode ).m_nFirstChild;
}

int32_t CKestoFile::GetNodeNextSibling( int32_t nNode ) const
{
	return GetNode( nNode ).m_nNextSibling;
}

uint32_t CKestoFile::GetNodeValue( int32_t nNode ) const
{
	return GetNode( nNode ).m_nValue;
}

int32_t CKestoFile::GetExclusiveTime( CTickTimings &frame, int32_t nNode ) const
{
	uint32_t nTime = frame.GetEntry( nNode ).m_nTime;
	for ( int32_t nChild = GetNodeFirstChild( nNode ); nChild >= 0; nChild = GetNodeNextSibling( nChild ) )
		nTime -= frame.PeekEntry( nChild ).m_nTime;
	return static_cast<int32_t>( nTime );
}

double CKestoFile::GetAverageTimePerCall( int32_t nNode ) const
{
	const Sum sum = GetSum( nNode );
	return sum.m_nCalls == 0 ? 0.0 : static_cast<double>( sum.m_nTime ) / static_cast<double>( sum.m_nCalls );
}

CKestoFile::Maximum CKestoFile::GetMaximum( int32_t nNode ) const
{
	return IsNode( nNode ) ? m_Maxima[nNode] : Maximum{};
}

CKestoFile::Sum CKestoFile::GetSum( int32_t nNode ) const
{
	return IsNode( nNode ) ? m_Sums[nNode] : Sum{};
}

CKestoFile::Maximum CKestoFile::FindNextFrame( int32_t nNode, int nFirstFrame, int32_t nThreshold ) const
{
	for ( int i = std::max( nFirstFrame, 0 ); i < GetFrameCount(); i++ )
	{
		const int32_t nTime = static_cast<int32_t>( GetFrame( i )->GetEntry( nNode ).m_nTime );
		if ( nTime >= nThreshold )
			return { nTime, i };
	}
	return {};
}
