#define SHOWBUDGET_PROJECT "simulation"
#include "animation.h"

#include <algorithm>

#include "budgets.h"

namespace demo
{
CAnimation::CAnimation( CJobSystem &jobs )
	: m_Jobs( jobs )
	, m_Clips( 6 )
	, m_Characters( CHARACTERS )
{
	CRandom random( 7 );
	for ( Clip &clip : m_Clips )
	{
		for ( auto &key : clip )
			for ( float &flAngle : key )
				flAngle = random.Between( -0.5f, 0.5f );
	}
	for ( Character &character : m_Characters )
	{
		character.m_flTime = random.Between( 0.0f, static_cast<float>( KEYS ) );
		character.m_nClip = random.Below( static_cast<uint32_t>( m_Clips.size() ) );
		for ( Joint &joint : character.m_Pose )
			joint.m_Axis = Normalised(
				{ random.Between( -1.0f, 1.0f ), random.Between( -1.0f, 1.0f ), random.Between( -1.0f, 1.0f ) } );
	}
}

void CAnimation::Update( float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Animation, "Animation" );
	m_Jobs.Run( CHARACTERS / BATCH, [this, flSeconds]( uint32_t nBatch ) { AnimateBatch( nBatch, flSeconds ); } );
	FindTop();
}

// Runs on whichever thread is free. On the frame thread its time is the budget's; on a worker only the mini-profiler
// counts it, since the frame does not get longer by it.
void CAnimation::AnimateBatch( uint32_t nBatch, float flSeconds )
{
	SHOWBUDGET_SCOPE( g_Animation, "Animate batch" );
	for ( uint32_t i = nBatch * BATCH; i < ( nBatch + 1 ) * BATCH; i++ )
	{
		Character &character = m_Characters[i];
		character.m_flTime += flSeconds * 8.0f;
		character.m_flBlend = 0.5f + 0.5f * std::sin( character.m_flTime * 0.3f );
		std::array<float, JOINTS> first, second;
		SampleClips( character, first, second );
		{
			SHOWBUDGET_SCOPE( g_Animation, "Blend poses" );
			for ( uint32_t nJoint = 0; nJoint < JOINTS; nJoint++ )
				character.m_Pose[nJoint].m_flAngle =
					first[nJoint] + ( second[nJoint] - first[nJoint] ) * character.m_flBlend;
		}
		PlaceJoints( character );
	}
}

void CAnimation::SampleClips(
	Character &character, std::array<float, JOINTS> &first, std::array<float, JOINTS> &second ) const
{
	SHOWBUDGET_SCOPE( g_Animation, "Sample clips" );
	const auto nKey = static_cast<uint32_t>( character.m_flTime ) % KEYS;
	const float flPart = character.m_flTime - std::floor( character.m_flTime );
	const auto Sample = [&]( const Clip &clip, std::array<float, JOINTS> &angles )
	{
		for ( uint32_t i = 0; i < JOINTS; i++ )
			angles[i] = clip[nKey][i] + ( clip[( nKey + 1 ) % KEYS][i] - clip[nKey][i] ) * flPart;
	};
	Sample( m_Clips[character.m_nClip], first );
	Sample( m_Clips[( character.m_nClip + 1 ) % m_Clips.size()], second );
}

// Each joint turns about its own axis and carries the next one.
void CAnimation::PlaceJoints( Character &character ) const
{
	SHOWBUDGET_SCOPE( g_Animation, "Place joints" );
	Vector position;
	Vector bone{ 0.0f, 0.1f, 0.0f };
	for ( uint32_t i = 0; i < JOINTS; i++ )
	{
		const Joint &joint = character.m_Pose[i];
		const float flCosine = std::cos( joint.m_flAngle );
		const float flSine = std::sin( joint.m_flAngle );
		bone = bone * flCosine + Cross( joint.m_Axis, bone ) * flSine +
			   joint.m_Axis * ( Dot( joint.m_Axis, bone ) * ( 1.0f - flCosine ) );
		position += bone;
		character.m_Positions[i] = position;
	}
}

void CAnimation::FindTop()
{
	SHOWBUDGET_SCOPE( g_Animation, "Skeleton bounds" );
	m_flTop = 0.0f;
	for ( const Character &character : m_Characters )
	{
		for ( const Vector &position : character.m_Positions )
			m_flTop = std::max( m_flTop, position.y );
	}
}
} // namespace demo
