#pragma once

#include "mainwindow/sourceport.h"

class ObsWrapper;

/// The engine as the rows of sources see it.
class ObsSources : public SourcePort
{
public:
    explicit ObsSources(ObsWrapper& obs);

    void setSpeaker(bool on) override;
    void setMicrophone(bool on) override;
    int microphoneCount() override;
    void setPointer(bool on) override;

private:
    ObsWrapper& m_obs;
};
