// Two recordings, node by node.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recordings/kestofile.h"
#include "tools/nodetree.h"
#include "tools/statistics.h"

// Welch's t-test: how likely means that differ at least as much would come about by chance if both sets were drawn from
// sources with the same mean (which may spread differently). Two-sided, from 0 to 1. None when a set has fewer than two
// numbers. Where neither set spreads at all it is 1 for equal means and 0 for others.
std::optional<double> WelchProbability( const CDistribution &a, const CDistribution &b );

struct NodeFigures
{
	double m_flMean = 0.0; // microseconds per frame; a frame without the node counts as 0
	double m_flPercentile95 = 0.0;
};

struct ComparedNode
{
	bool m_bRowOfA = true; // of nodes that are in B only, the row is one of B's tree
	int32_t m_nRow = 0;
	std::optional<NodeFigures> m_A; // none: not in that recording
	std::optional<NodeFigures> m_B;
	std::optional<double> m_flProbability; // only of nodes in both

	double Change() const; // of the mean, from A to B, microseconds; a node that is not there has a mean of 0
	std::optional<double> ChangePercent() const; // none when the mean of A is 0
};

struct Comparison
{
	CNodeTree m_TreeA;
	CNodeTree m_TreeB;
	std::vector<ComparedNode> m_Nodes;

	std::string Path( const ComparedNode &node ) const; // Latin-1, see CNodeTree
};

// Nodes of the same path are one; several of them in one recording are added up. The largest change comes first, up or
// down; equal ones come in the order of A's tree, then B's.
// The files must outlive the comparison. The progress is told which part of the work, from 0 to 1, is done.
Comparison CompareRecordings(
	const CKestoFile &a, const CKestoFile &b, const std::function<void( double flDone )> &progress = {} );
