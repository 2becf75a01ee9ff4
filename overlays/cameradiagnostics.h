#pragma once

class CameraSystem;

/// Writes what may explain a missing camera picture to the log: the toolkit's version, where it looks for its
/// multimedia plug-ins and what lies there, and each camera with its formats. Any thread, once the user-interface
/// thread has asked the system for its cameras.
void writeCameraDiagnostics(const CameraSystem& cameras);
