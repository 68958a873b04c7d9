// A recording in memory: profiler nodes, and for every frame the calls and the time of each.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "recordings/pagedlist.h"
#include "recordings/refptr.h"
#include "recordings/textarena.h"

class CKestoFileParser;

// Times are microseconds everywhere. A node is named by its id, from 0 to 1,048,575; where a query takes a node, any
// other int is allowed too and is a node that nothing is known of. A frame is named by its index in the file (its
// tick).
//
// The nodes of a damaged recording may be anything but a tree: a node can be its own ancestor, and it can be found
// below several parents. Only one thing is certain: a chain of siblings ends.
class CKestoFile
{
public:
	class CReader;
	class CTickTimings;

	struct Maximum
	{
		int32_t m_nTime = 0;   // the time farthest from zero
		int32_t m_nFrame = -1; // the first frame that had it; -1 = none

		friend bool operator==( const Maximum &, const Maximum & ) = default;
	};

	struct Sum // over all frames, modulo 2^32
	{
		uint32_t m_nCalls = 0;
		uint32_t m_nTime = 0;

		friend bool operator==( const Sum &, const Sum & ) = default;
	};

	struct TableString
	{
		const char *m_pText; // valid as long as the file
		uint32_t m_nValue;
	};

	// Reads everything that the reader has, and keeps whatever came before a problem. Problems are reported to the
	// reader, which is not used after the construction. The new file has one reference.
	explicit CKestoFile( CReader &reader );
	CKestoFile( const CKestoFile & ) = delete;
	CKestoFile &operator=( const CKestoFile & ) = delete;

	void AddRef() { m_nReferences.fetch_add( 1, std::memory_order_relaxed ); }
	void Release(); // the last one destroys the file

	int GetFrameCount() const { return static_cast<int>( m_Frames.size() ); }
	CTickTimings *GetFrame( int nFrame ) const; // null below 0 and from GetFrameCount() on; no reference is added

	// -1 before the header was read; may be at or past GetNodeCount(), and even out of the range of ids when the header
	// says so (there are no frames then).
	int32_t GetRootNode() const { return m_nRootNode; }
	int32_t GetNodeCount() const { return m_Nodes.Count(); }
	const char *GetNodeName( int32_t nNode ) const; // 8-bit text, empty until defined; valid as long as the file
	int32_t GetNodeParent( int32_t nNode ) const;   // -1 = none, as for the two below
	int32_t GetNodeFirstChild( int32_t nNode ) const;
	int32_t GetNodeNextSibling( int32_t nNode ) const;
	uint32_t GetNodeValue( int32_t nNode ) const;

	const std::vector<TableString> &GetStringTable() const { return m_Strings; }

	// The node's time in the frame minus the times of its direct children, in wrapping 32-bit arithmetic; may be
	// negative.
	int32_t GetExclusiveTime( CTickTimings &frame, int32_t nNode ) const;

	// Over the whole recording; 0 when the node was never called.
	double GetAverageTimePerCall( int32_t nNode ) const;

	// Both lists are as long as the longest frame was when it was read.
	int32_t GetStatisticsCount() const { return m_Maxima.Count(); }
	Maximum GetMaximum( int32_t nNode ) const;
	Sum GetSum( int32_t nNode ) const;

	// The first frame from nFirstFrame on in which the node takes nThreshold or more, and its time there;
	// {0, -1} when there is none.
	Maximum FindNextFrame( int32_t nNode, int nFirstFrame, int32_t nThreshold ) const;

private:
	friend class CKestoFileParser;

	struct Node
	{
		const char *m_pName = "";
		int32_t m_nFirstChild = -1;
		int32_t m_nNextSibling = -1;
		int32_t m_nParent = -1; // also says that the node was never linked
		uint32_t m_nValue = 0;
	};

	~CKestoFile();
	const Node &GetNode( int32_t nNode ) const;

	std::atomic<int> m_nReferences{ 1 };
	int32_t m_nRootNode = -1;
	std::deque<CRefPtr<CTickTimings>> m_Frames;
	CPagedList<Node> m_Nodes;
	CPagedList<Maximum> m_Maxima;
	CPagedList<Sum> m_Sums;
	std::vector<TableString> m_Strings;
	CTextArena m_Texts; // names and strings
};

// Where the bytes of a recording come from. The first three operations are what every reader has, in this order of
// their slots.
class CKestoFile::CReader
{
public:
	// Appends the message to the reader's failure text, after a line feed when there is text already, and clears
	// m_bGood. From then on nothing is delivered any more.
	virtual void ReportFailure( const char *pMessage ) = 0;

	// Delivers nCount bytes and returns nCount, or delivers nothing, reports why and returns 0.
	virtual int Read( void *pDestination, int nCount ) = 0;

	virtual int64_t BytesLeft() const = 0;

	virtual ~CReader() = default;

	// Bytes ahead that may be used without a Read, as far as the reader has nothing to do in between: valid until the
	// next call of anything, of any length, empty when there are none or the reader has failed. A reader that offers
	// none is read field by field; what is parsed is the same.
	virtual std::span<const uint8_t> PeekSpan() { return {}; }

	// Counts nBytes from the front of the last span as read.
	virtual void SkipSpan( size_t /*nBytes*/ ) {}

	bool m_bGood = true; // no failure was reported
};

// One frame: calls and time of every node.
class CKestoFile::CTickTimings
{
public:
	struct Entry
	{
		uint32_t m_nCalls;
		uint32_t m_nTime; // microseconds modulo 2^32; read as signed where times are compared

		friend bool operator==( const Entry &, const Entry & ) = default;
	};

	// The entries that take memory; the others of the frame are 0. An entry takes 32 bits: the calls in the lowest 8,
	// the time in units of 4 microseconds above them. One that does not fit in is LONG there and has a place of its
	// own.
	struct Storage
	{
		static constexpr uint32_t LONG = 0xFFFFFFFF;
		struct LongEntry
		{
			int32_t m_nSlot;
			Entry m_Entry;
		};

		int32_t m_nCount = 0;  // length of the frame's list
		int32_t m_nStored = 0; // slots, at most as many
		// Slot i belongs to node i, or to the i-th of m_pNodes where there are some.
		std::shared_ptr<uint32_t[]> m_pPacked;                // a piece of a slab that many frames share
		std::shared_ptr<const std::vector<int32_t>> m_pNodes; // ascending; frames of one shape share it
		std::unique_ptr<std::vector<LongEntry>> m_pLong;      // ascending by slot; null when there are none

		static Entry Unpack( uint32_t nPacked ); // not LONG
		Entry Get( int32_t nSlot ) const;
		// Writes to the slot. Long ones are to be sorted before anything is read.
		void Put( int32_t nSlot, const Entry &entry );
		void SortLong();
	};

	// With one reference.
	explicit CTickTimings( Storage storage )
		: m_Storage( std::move( storage ) )
	{
	}
	CTickTimings( const CTickTimings & ) = delete;
	CTickTimings &operator=( const CTickTimings & ) = delete;

	void AddRef() { m_nReferences.fetch_add( 1, std::memory_order_relaxed ); }
	void Release();

	// The length of the list of entries, of which only those that were recorded take memory.
	int32_t GetCount() const { return m_Storage.m_nCount; }

	// Extends the list up to the node when it is shorter, by entries of 0. A node that cannot be (see CKestoFile) reads
	// as 0 and extends nothing.
	Entry GetEntry( int32_t nNode );

	// Does not extend the list; at and past its end an entry reads as 0.
	Entry PeekEntry( int32_t nNode ) const;

	const Storage &GetStorage() const { return m_Storage; }

private:
	~CTickTimings() = default;

	std::atomic<int> m_nReferences{ 1 };
	Storage m_Storage;
};

inline CKestoFile::CTickTimings::Entry CKestoFile::CTickTimings::Storage::Unpack( uint32_t nPacked )
{
	return { nPacked & 0xff, ( nPacked >> 8 ) * wire::RECORDING_TIME_UNIT };
}
