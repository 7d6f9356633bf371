// GStreamer: filesrc ! qtdemux, paused until the demuxer has shown all its pads. Nothing is linked
// behind them, so that no sample is parsed or read.
//   peer_gstreamer FILE REPEATS [SECONDS]
#include <gst/gst.h>

#include "bench/Repeat.h"

namespace {

constexpr GstMessageType kEnds =
    static_cast<GstMessageType>(GST_MESSAGE_APPLICATION | GST_MESSAGE_ERROR | GST_MESSAGE_EOS);

/// The demuxer is done with the headers: told to the thread that waits.
void OnNoMorePads(GstElement* demuxer, gpointer) {
  GstMessage* done = gst_message_new_application(GST_OBJECT(demuxer), gst_structure_new_empty("x"));
  gst_element_post_message(demuxer, done);
}

bool Open(const std::string& path) {
  GstElement* pipeline = gst_pipeline_new(nullptr);
  GstElement* source = gst_element_factory_make("filesrc", nullptr);
  GstElement* demuxer = gst_element_factory_make("qtdemux", nullptr);
  if (source == nullptr || demuxer == nullptr) return false;
  g_object_set(source, "location", path.c_str(), nullptr);
  gst_bin_add_many(GST_BIN(pipeline), source, demuxer, nullptr);
  gst_element_link(source, demuxer);
  g_signal_connect(demuxer, "no-more-pads", G_CALLBACK(OnNoMorePads), nullptr);
  gst_element_set_state(pipeline, GST_STATE_PAUSED);

  GstBus* bus = gst_element_get_bus(pipeline);
  GstMessage* end = gst_bus_timed_pop_filtered(bus, 60 * GST_SECOND, kEnds);
  const bool opened = end != nullptr && GST_MESSAGE_TYPE(end) == GST_MESSAGE_APPLICATION;
  if (end != nullptr) gst_message_unref(end);
  gst_object_unref(bus);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  return opened;
}

}  // namespace

int main(int argc, char** argv) {
  gst_init(nullptr, nullptr);
  return bench::RepeatMain(argc, argv, Open);
}
