// Passes the frames of a recording on to a sink.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "recordings/kestofile.h"
#include "tools/convert/framesink.h"
#include "tools/convert/recordingsink.h"

namespace convert
{
// The tree is what the root reaches, each node where it is reached first: the nodes of a damaged recording may be
// anything but a tree.
class CRecordingFeed : public INodeTexts
{
public:
	CRecordingFeed( const CKestoFile &file, CReport &report );

	std::string_view Name( const CCallTree::Node &node ) override;
	NodeRecord Record( const CCallTree::Node &node ) const; // for a recording that is made of this one
	void CountLosses() const;                               // of every target that is no recording

	// How many times of nodes the sink will be given. In a whole recording that is as many as the file holds. Damage
	// can leave nodes in the tree that most frames know nothing of, and then it is frames times nodes, which no longer
	// has anything to do with the size of the file.
	uint64_t EntryCount() const;

	// The progress is told how many frames are done. False: the sink could not write. The sink's Finish is the
	// caller's.
	bool Run( IFrameSink &sink, const std::function<void( int nFrames )> &progress );

private:
	struct Found
	{
		int32_t m_nNode;                       // of the file
		int32_t m_nParent;                     // index of the parent; NONE of the root
		int32_t m_nNeededCount;                // how long the list of a frame is that has the node and those around it
		int32_t m_nTreeNode = CCallTree::NONE; // once it is in the tree
	};

	int32_t NodeOf( const CCallTree::Node &node ) const; // of the file
	void FindNodes();
	void AddNodes( int32_t nCount );
	bool AddFrame( IFrameSink &sink, const CKestoFile::CTickTimings &frame );

	const CKestoFile &m_File;
	CReport &m_Report;
	int32_t m_nRootParent = CCallTree::NONE; // of the file, when it is not below the root
	std::vector<Found> m_Found;              // parents before children, children in their order
	CCallTree m_Tree;                        // a node's name is the file's node
	std::vector<NodeTimes> m_Times;
	std::string m_Name; // that was asked for last
};
} // namespace convert
