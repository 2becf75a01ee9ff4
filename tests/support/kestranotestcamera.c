// SPDX-License-Identifier: GPL-3.0-or-later
/* A camera that is not there, for programs that ask GStreamer for the cameras of the machine: a plug-in that lists one
 * while the file named by KESTRANO_TEST_CAMERA exists. It shows colour bars, in the sizes and at the frame rates of a
 * common webcam. */

#include <gst/gst.h>

#include <unistd.h>

#define PACKAGE "kestrano"

/* How often the file is looked for. */
static const gulong kPollMicroseconds = 100000;

static const char kFormats[] = "video/x-raw, format=YUY2, width=1280, height=720, framerate=30/1;"
                               "video/x-raw, format=YUY2, width=640, height=480, framerate=30/1;"
                               "video/x-raw, format=YUY2, width=1920, height=1080, framerate=5/1";

/* ---- The camera ------------------------------------------------------------------------------------------------- */

typedef struct
{
    GstDevice parent;
} TestCamera;

typedef struct
{
    GstDeviceClass parent;
} TestCameraClass;

GType test_camera_get_type(void);
G_DEFINE_TYPE(TestCamera, test_camera, GST_TYPE_DEVICE)

static GstElement* create_element(GstDevice* device, const gchar* name)
{
    GstElement* source = gst_element_factory_make("videotestsrc", name);
    (void)device;
    if (source != NULL)
        g_object_set(source, "is-live", TRUE, NULL);
    return source;
}

static void test_camera_class_init(TestCameraClass* class)
{
    class->parent.create_element = create_element;
}

static void test_camera_init(TestCamera* camera)
{
    (void)camera;
}

static GstDevice* make_camera(void)
{
    GstCaps* caps = gst_caps_from_string(kFormats);
    GstDevice* camera = g_object_new(test_camera_get_type(), "display-name", "Kestrano Test Camera", "device-class",
                                     "Video/Source", "caps", caps, NULL);
    gst_caps_unref(caps);
    return camera;
}

static gboolean is_plugged_in(void)
{
    const gchar* file = g_getenv("KESTRANO_TEST_CAMERA");
    return file != NULL && access(file, F_OK) == 0;
}

/* ---- The list of cameras ---------------------------------------------------------------------------------------- */

typedef struct
{
    GstDeviceProvider parent;
    GstDevice* camera;
    GThread* watcher;
    gint ends;
} TestCameras;

typedef struct
{
    GstDeviceProviderClass parent;
} TestCamerasClass;

GType test_cameras_get_type(void);
G_DEFINE_TYPE(TestCameras, test_cameras, GST_TYPE_DEVICE_PROVIDER)

static void look(TestCameras* cameras)
{
    GstDeviceProvider* provider = GST_DEVICE_PROVIDER(cameras);
    if (is_plugged_in() == (cameras->camera != NULL))
        return;
    if (cameras->camera == NULL) {
        cameras->camera = gst_object_ref(make_camera());
        gst_device_provider_device_add(provider, cameras->camera);
    } else {
        gst_device_provider_device_remove(provider, cameras->camera);
        gst_clear_object(&cameras->camera);
    }
}

static gpointer watch(gpointer data)
{
    TestCameras* cameras = data;
    while (!g_atomic_int_get(&cameras->ends)) {
        look(cameras);
        g_usleep(kPollMicroseconds);
    }
    return NULL;
}

static GList* probe(GstDeviceProvider* provider)
{
    (void)provider;
    return is_plugged_in() ? g_list_append(NULL, gst_object_ref_sink(make_camera())) : NULL;
}

static gboolean start(GstDeviceProvider* provider)
{
    TestCameras* cameras = (TestCameras*)provider;
    look(cameras);
    g_atomic_int_set(&cameras->ends, 0);
    cameras->watcher = g_thread_new("cameras", watch, cameras);
    return TRUE;
}

static void stop(GstDeviceProvider* provider)
{
    TestCameras* cameras = (TestCameras*)provider;
    g_atomic_int_set(&cameras->ends, 1);
    g_thread_join(cameras->watcher);
    gst_clear_object(&cameras->camera);
}

static void test_cameras_class_init(TestCamerasClass* class)
{
    class->parent.probe = probe;
    class->parent.start = start;
    class->parent.stop = stop;
    gst_device_provider_class_set_static_metadata(&class->parent, "Test cameras", "Source/Video",
                                                  "Lists a camera that is not there", "Kestrano");
}

static void test_cameras_init(TestCameras* cameras)
{
    (void)cameras;
}

static gboolean plugin_init(GstPlugin* plugin)
{
    return gst_device_provider_register(plugin, "kestranotestcameras", GST_RANK_PRIMARY, test_cameras_get_type());
}

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kestranotestcamera, "A camera that is not there", plugin_init,
                  "1.0", "GPL", PACKAGE, "https://www.kestrano.example/")
