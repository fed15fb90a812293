// Serves one MP4 clip with H.264 video over RTSP on the loopback address: zo_rtsp_server CLIP. Prints the
// port and runs until it is stopped. The clip is at rtsp://127.0.0.1:PORT/clip.
#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  gst_init(nullptr, nullptr);
  GMainLoop* const p_loop = g_main_loop_new(nullptr, FALSE);
  GstRTSPServer* const p_server = gst_rtsp_server_new();
  gst_rtsp_server_set_address(p_server, "127.0.0.1");
  gst_rtsp_server_set_service(p_server, "0");
  GstRTSPMediaFactory* const p_factory = gst_rtsp_media_factory_new();
  const std::string pipeline = std::string("( filesrc location=") + argv[1] +
                               " ! qtdemux ! h264parse ! rtph264pay name=pay0 pt=96 config-interval=-1 )";
  gst_rtsp_media_factory_set_launch(p_factory, pipeline.c_str());
  GstRTSPMountPoints* const p_mounts = gst_rtsp_server_get_mount_points(p_server);
  gst_rtsp_mount_points_add_factory(p_mounts, "/clip", p_factory);
  g_object_unref(p_mounts);
  if (gst_rtsp_server_attach(p_server, nullptr) == 0) {
    return 1;
  }
  std::printf("%d\n", gst_rtsp_server_get_bound_port(p_server));
  std::fflush(stdout);
  g_main_loop_run(p_loop);
  return 0;
}
