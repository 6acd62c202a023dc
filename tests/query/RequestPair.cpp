// SPDX-License-Identifier: Apache-2.0
// The pair of files of requestDescriptor() and requestSettings(), and the graph that settings 7 gives.
#include "query/GraphFixture.h"

namespace graphtest {

std::string requestDescriptor()
{
    return R"(<graph_descriptor version="KVA6">
  <nodes>
    <source name="sensor">
      <pixel_array><output width="0" height="0"/></pixel_array>
      <port name="port_0" direction="1"/>
    </source>
    <hw name="csi_be">
      <port name="csi_in" direction="0"/>
      <port name="csi_out" direction="1" format="RAW10"/>
      <port name="csi_dbg" direction="1"/>
    </hw>
    <base_node name="pg_base" base_type="program_group" exec_ctx_id="0" stream_id="60">
      <port name="in" direction="0"/>
      <port name="out" direction="1" format="NV12">
        <options attribute="format">
          <option value="NV12,P010"><apply><pg_base bpp="8"/></apply></option>
        </options>
      </port>
      <port name="stats" direction="1" content_type="statistics"/>
      <kernel name="k0" enabled="1"/>
    </base_node>
    <node name="pg_video" base_node="pg_base">
      <attribute target="exec_ctx_id" value="3"/>
      <attribute target="out:width" value="1920"/>
    </node>
    <sink name="video_sink"/>
    <sink name="still_sink"/>
    <sink name="stats_sink"/>
  </nodes>
  <graphs>
    <graph id="100">
      <connection source="sensor:port_0" sink="csi_be:csi_in"/>
      <connection source="csi_be:csi_out" sink="pg_video:in"/>
      <connection source="pg_video:out" sink="video_sink"/>
      <connection source="pg_video:stats" sink="stats_sink" static="true"/>
      <apply target="pg_video:k0:enabled" value="0"/>
    </graph>
  </graphs>
</graph_descriptor>)";
}

std::string requestSettings()
{
    return R"(<graph_settings version="KVA6.2">
  <sensor_modes fps="30">
    <mode name="full"><pixel_array><output width="4208" height="3120"/></pixel_array></mode>
    <mode name="binned"><pixel_array><output width="2104" height="1560"/></pixel_array></mode>
  </sensor_modes>
  <settings key="6" id="101"/>
  <settings key="7" id="100">
    <sensor mode_id="full"><port_0/></sensor>
    <csi_be><csi_out width="4208"/></csi_be>
    <pg_video><out peer="still_sink" width="1280"/></pg_video>
    <still_sink/>
  </settings>
</graph_settings>)";
}

std::string requestGraph()
{
    // Items stand in key order: built-in generic keys, names in the order in which the two files bring them up (port_0,
    // csi_in, csi_out, csi_dbg, pg_base, in, out, option, stats, k0, pg_video, ...), then integer keys.
    const std::string options = "options{attribute=16 "                               // 16: the key of `format`
                                "option{value='NV12,P010' apply{pg_video{bpp=8}}}} "; // re-targeted from pg_base
    return "graph{connection{sink='csi_be:csi_in' source='sensor:port_0'} "
           "connection{sink='pg_video:in' source='csi_be:csi_out'} "
           "connection{sink='video_sink' source='pg_video:out'} "
           "connection{sink='stats_sink' source='pg_video:stats' static='true'} "
           "apply{target='pg_video:k0:enabled' value='0'} version='KVA6' id=100} "
           // The mode `full` over the defaults of sensor_modes.
           "sensor{mode_id='full' name='sensor' pixel_array{output{height=3120 width=4208}} type='source' "
           "port_0{name='port_0' peer='csi_be:csi_in' type='port' direction=1} fps=30} "
           "csi_be{name='csi_be' type='hw' csi_in{name='csi_in' peer='sensor:port_0' type='port' direction=0} "
           "csi_out{format='RAW10' name='csi_out' peer='pg_video:in' type='port' direction=1 width=4208} "
           "csi_dbg{name='csi_dbg' type='port' direction=1 enabled=0}} " // nothing feeds it
           // `in` was given format and width by csi_out; the override switched k0 off.
           "pg_video{base_type='program_group' name='pg_video' type='program_group' "
           "in{format='RAW10' name='in' peer='csi_be:csi_out' type='port' direction=0 width=4208} "
           "out{format='NV12' name='out' peer='still_sink' type='port' " +
           options +
           "direction=1 width=1280} "
           "stats{content_type='statistics' name='stats' peer='stats_sink' type='port' direction=1} "
           "k0{name='k0' type='kernel' enabled=0} exec_ctx_id=3 stream_id=60} "
           // The setting redirected `out` here; it was given what `out` holds and it lacked.
           "still_sink{format='NV12' name='still_sink' peer='pg_video:out' type='sink' " +
           options +
           "direction=0 stream_id=60 width=1280} "
           "stats_sink{name='stats_sink' peer='pg_video:stats' type='sink' direction=0 exec_ctx_id=3} "
           "id=100 key=7";
}

} // namespace graphtest
