# Frame navigation: the index, the file that keeps it, jumps.
zo_add_test(zo_packet_index_test
  SOURCES zo_packet_index_test.cpp zo_navigation_cache_test.cpp
  LIBS zo_video_internal zo_test_support)

# Jumps are watched: the linker sends the reader's calls into FFmpeg, and to the clock, through counters.
add_library(zo_navigation_test STATIC zo_ffmpeg_calls.cpp zo_navigation_test.cpp)
target_include_directories(zo_navigation_test PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(zo_navigation_test PUBLIC zo_video_internal zo_test_support PRIVATE zo_warnings)
foreach(function
    av_read_frame av_seek_frame avcodec_send_packet avcodec_receive_frame avcodec_flush_buffers
    avcodec_alloc_context3 avcodec_parameters_to_context avcodec_open2
    avformat_alloc_context av_packet_alloc av_frame_alloc
    avformat_find_stream_info avcodec_find_decoder_by_name
    _ZN2zo18getMonotonicTimeMsEv)
  target_link_options(zo_navigation_test INTERFACE LINKER:--wrap=${function})
endforeach()

zo_add_test(zo_exact_jump_test
  SOURCES zo_exact_jump_test.cpp zo_last_group_test.cpp
  LIBS zo_navigation_test)
zo_add_test(zo_damaged_jump_test
  SOURCES zo_damaged_jump_test.cpp zo_inexact_files_test.cpp
  LIBS zo_navigation_test)
zo_add_test(zo_real_clip_jump_test
  SOURCES zo_real_clip_jump_test.cpp
  LIBS zo_navigation_test)
zo_add_test(zo_move_by_index_test
  SOURCES
    zo_jump_cost_test.cpp
    zo_move_by_index_test.cpp
    zo_navigation_cache_reader_test.cpp
    zo_reader_failure_test.cpp
    zo_reader_files_test.cpp
  LIBS zo_navigation_test)

zo_add_test(zo_reader_recovery_test
  SOURCES zo_index_scan_test.cpp zo_reader_recovery_test.cpp
  LIBS zo_navigation_test)

zo_add_test(zo_reader_threads_test
  SOURCES zo_reader_threads_test.cpp
  LIBS zo::video zo_test_support)
