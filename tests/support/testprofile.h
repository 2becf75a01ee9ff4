#pragma once

#include <QTemporaryDir>

/// A user profile of its own for one test program: home, XDG folders and the folder of temporary files (and with it the
/// single-instance segment) lie under a temporary directory that goes with the object. Make it first thing in main(),
/// before the application object.
class TestProfile
{
public:
    TestProfile();

    /// Absolute path of the profile's root folder.
    QString path() const;

private:
    QTemporaryDir m_root;
};
