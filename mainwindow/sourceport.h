#pragma once

/// What the rows of sources need of the engine; in the program it is ObsSources. User-interface thread.
class SourcePort
{
public:
    virtual ~SourcePort() = default;

    /// Put the default device on the recording, or take it off.
    virtual void setSpeaker(bool on) = 0;
    virtual void setMicrophone(bool on) = 0;

    /// Entries in a list of microphones read now; the default device is one of them, so that a system with one
    /// microphone has two.
    virtual int microphoneCount() = 0;

    /// Whether the pointer is captured.
    virtual void setPointer(bool on) = 0;
};
