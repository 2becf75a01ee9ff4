#pragma once

#include "mainwindow/sourceport.h"

class ObsWrapper;

/// The engine, and the system's cameras, as the rows of sources see them.
class ObsSources : public SourcePort
{
public:
    explicit ObsSources(ObsWrapper& obs);

    void setSpeaker(bool on) override;
    void setMicrophone(bool on) override;
    int microphoneCount() override;
    void setPointer(bool on) override;
    bool hasCamera() const override;

private:
    ObsWrapper& m_obs;
};
