// The engine: a simulation in fixed steps, several drawn frames for each, and a loop that keeps 60 of them a second.
#pragma once

#include <chrono>
#include <cstdint>

#include "animation.h"
#include "audio.h"
#include "jobsystem.h"
#include "particles.h"
#include "physics.h"
#include "postprocess.h"
#include "renderer.h"
#include "scripting.h"
#include "streaming.h"
#include "visibility.h"

namespace demo
{
class CEngine
{
public:
	explicit CEngine( uint32_t nBodies );

	// Writes what the last frame drew as a portable pixmap. False when the file cannot be written.
	bool WritePicture( const char *pFile ) const;

	// Registers the console commands. The engine must outlive the session.
	void RegisterCommands();
	// Runs one frame, waits until it is due, and ends it.
	void RunFrame();

private:
	using Time = std::chrono::steady_clock::time_point;

	// Simulates what is due; whether a tick began.
	bool Simulate( float flSeconds );
	void StepSimulation();
	void CauseTrouble();
	void DrawFrame();
	void WaitForNextFrame();
	void BeSlow();

	static void OnBodies( int nArguments, const char *const *ppArguments, void *pEngine );
	static void OnSlow( int nArguments, const char *const *ppArguments, void *pEngine );
	static void OnExplode( int nArguments, const char *const *ppArguments, void *pEngine );
	static void OnStatus( int nArguments, const char *const *ppArguments, void *pEngine );

	CJobSystem m_Jobs;
	CPhysics m_Physics;
	CAnimation m_Animation{ m_Jobs };
	CScripting m_Scripting;
	CStreaming m_Streaming;
	CParticles m_Particles;
	CVisibility m_Visibility;
	CRenderer m_Renderer;
	CPostProcess m_PostProcess;
	CAudio m_Audio;
	CRandom m_Random{ 5 };

	Time m_LastFrame;
	Time m_NextFrame;
	float m_flTime = 0.0f;        // seconds since the start
	float m_flUnsimulated = 0.0f; // seconds that the simulation is behind
	uint64_t m_nTick = 0;
	uint32_t m_nSlowMilliseconds = 0; // of the next frame
};
} // namespace demo
