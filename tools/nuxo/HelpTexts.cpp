// SPDX-License-Identifier: Apache-2.0
#include "HelpTexts.h"

namespace NuxoTool {

const char* const kExitCodes = R"help(Exit codes:
  0  done
  1  findings: faults in files, no or more than one setting, an error of the library; files that differ (diff, fmt --check)
  2  usage: a bad option or criterion, an unknown format; also a name that no file or vocabulary has
  3  a file cannot be read, or output cannot be written; of diff also whatever keeps it from comparing
  4  internal error, out of memory)help";

const char* const kMainFooter = R"help(Examples:
  nuxo dump settings.xml
  nuxo query descriptor.xml settings.xml img_sink:width=1920 img_sink:height=1080
  nuxo build descriptor.xml settings.xml --key 10001
  nuxo build descriptor.xml settings.xml --key 10001 --format dot | dot -Tsvg -o graph.svg
  nuxo ports descriptor.xml settings.xml --key 10001
  nuxo kernels descriptor.xml settings.xml --key 10001
  nuxo formats NV12 --width 1920 --height 1080

-v and --color may follow the verb as well. Data goes to standard output, findings to standard error as
  file:line:column: error[rule]: what was found; what was expected
)help";

const char* const kDumpFooter =
    R"help(A node is shown as "name (element kind)" with its attributes, in the order in which the library keeps them.
Of a malformed file the part before the error is shown.

Examples:
  nuxo dump descriptor.xml.gz
  nuxo dump settings.xml --format json
)help";

const char* const kQueryFooter =
    R"help(A criterion is the path of an attribute below a setting, names joined by ':', and the text that it must hold,
integers as decimal digits. Without criteria every setting is listed.

Examples:
  nuxo query descriptor.xml settings.xml
  nuxo query descriptor.xml settings.xml img_sink:width=1920 sensor:mode_id=full
  nuxo query descriptor.xml settings.xml img_sink:width=1920 raw_sink:width=4208 --any
)help";

const char* const kBuildFooter =
    R"help(The setting is the one with the given key, or the only one that the criteria select (see nuxo query --help).
With --origin "-" marks values that the library added by itself.

Examples:
  nuxo build descriptor.xml settings.xml --key 10001
  nuxo build descriptor.xml settings.xml img_sink:width=1920 img_sink:format=NV12 --origin
  nuxo build descriptor.xml settings.xml --key 10001 --format json
  nuxo build descriptor.xml settings.xml --key 10001 --format dot | dot -Tpng -o graph.png
)help";

const char* const kPortsFooter =
    R"help(One line a port of the built graph, in the order of the graph; a virtual sink is a port by itself. The setting
is chosen as for nuxo build. "-" marks what does not apply: disabled and private ports have no peer, statistics no size.
  ENABLED   yes, no, or private: internal to its node
  PEER      the other end; the library follows the first when there are several
  EDGE      whether the connection leaves the execution context, of graphs without any the stream; "-" when one end
            is in neither
  STRIDE    bytes from line to line, BUFFER: bytes of one frame
  TERMINAL  the terminal's identifier, stage and port together

Examples:
  nuxo ports descriptor.xml settings.xml --key 10001
  nuxo ports descriptor.xml settings.xml img_sink:width=1920 --format json
)help";

const char* const kContextsFooter =
    R"help(Three tables: the program groups (from generation 7 on: compute blocks) and external stages of each execution
context with its tuning mode; the connections that cross contexts; the boundary ports, through which each context is
connected to others or to nothing. Graphs without execution contexts are told apart by stream instead.

Examples:
  nuxo contexts descriptor.xml settings.xml --key 10001
  nuxo contexts descriptor.xml settings.xml --key 10001 --format json
)help";

const char* const kKernelsFooter =
    R"help(The run-kernel records that the parameter library receives: one line a kernel, program group by program group in
the order of their streams, or those of one stream or group. A kernel with several outputs has a line for each.
  STATE        ENABLED, DISABLED (no frame passes) or BYPASS
  IN, OUT      what the kernel says of its own sizes; crops are left,top,right,bottom, "-" without any
  SOURCE       size of the source, SOURCE CROP: everything cropped so far in its pixels, ARRIVES: size that is left
  BPP          bits per pixel at input and output

Examples:
  nuxo kernels descriptor.xml settings.xml --key 10001
  nuxo kernels descriptor.xml settings.xml --key 10001 --stream 60001
  nuxo kernels descriptor.xml settings.xml --key 10001 --group video_pg --format json
)help";

const char* const kHistoryFooter =
    R"help(How size and crop of the frame change on its way to one stream and through it, from the sensor to each kernel and
sink, in the order in which the frame passes. What other streams do to the frame before stands first.
  FITS         "-" where nothing states a size, yes, or the size that is stated in place of the one that arrives
  SOURCE CROP  everything cropped up to here, in pixels of the source; left,top,right,bottom
  TO           where the frame goes; other ends of the same group without its name
A kernel that takes another size than arrives breaks the chain. Where kernels have links the library stops there, and
the chain is shown up to the first; otherwise it goes on with the size that the kernel states.

Examples:
  nuxo history descriptor.xml settings.xml --key 10001 --stream 60001
  nuxo history descriptor.xml settings.xml --key 10001 --stream 60001 --format json
)help";

const char* const kDrawFooter =
    R"help(Draws the whole graph of a setting: nodes with their ports, grouped by execution context, or by stream in graphs
without contexts. With --stream the inside of one stream: kernels, routing elements and ports of its program groups, with
the size of the frame at each link. What is disabled or bypassed is dashed; what leads back to an earlier stage is blue.
  dot   the language of graphviz
  svg   a picture, laid out by graphviz's program dot
  html  a page for a browser that needs no network: all settings, or those that --key or the criteria select, with the
        insides of their streams; search, attributes with their places, the path of the frames to a sink. --stream says
        which inside is shown first. Also laid out by dot.
dot is looked for in PATH and ended after 30 seconds; the variable NUXO_DOT_SECONDS sets another limit.

Examples:
  nuxo draw descriptor.xml settings.xml --key 10001 --format svg > graph.svg
  nuxo draw descriptor.xml settings.xml --key 10001 --stream 60001 --format svg > stream.svg
  nuxo draw descriptor.xml settings.xml --format html > graphs.html
  nuxo draw descriptor.xml settings.xml --key 10001 | dot -Tpng -o graph.png
)help";

const char* const kFrameParamsFooter =
    R"help(The frame that statistics refer to, as the 3A library is told: where the image lies in the sensor's pixel array,
how large it is there, and by which fractions it was scaled. With --port the frame of one port instead.

Examples:
  nuxo frame-params descriptor.xml settings.xml --key 10001
  nuxo frame-params descriptor.xml settings.xml --key 10001 --port video_pg:main_out
)help";

const char* const kFormatsFooter =
    R"help(Without a name the table of all formats. A format is named as in graph files or by its four-character code, in
exactly these letters. Strides are those that the hardware expects for the width; --bpl gives another one. Compressed
formats have a tile-status table for each plane behind the image.

Examples:
  nuxo formats
  nuxo formats YUV420_8_SP --width 1920 --height 1080
  nuxo formats CN12 --bpl 2048 --height 1080 --format json
)help";

const char* const kCheckFooter =
    R"help(Runs all rules over the descriptor, each settings file and each setting, which is built and analysed. Without a
settings file the descriptor alone is checked. A rule's findings are errors or warnings (see --list-rules); -W and -E
say which, --no leaves a rule out, -Werror makes all warnings errors. Warnings alone end with exit code 0.

Examples:
  nuxo check descriptor.xml settings.xml
  nuxo check descriptor.xml video.xml stills.xml -Werror
  nuxo check descriptor.xml settings.xml --settings 10001 --no unused-node
  nuxo check descriptor.xml settings.xml --format sarif > findings.sarif
  nuxo check --explain connection-end
)help";

const char* const kExplainFooter =
    R"help(PATH names an attribute, or a node with all that is in it, below the built graph, names joined by ':'; '.' is the
whole graph. Items of one name are told apart by a number, as in graph:connection[2]. Every line of both files that had
a say is shown in the order in which the library applies them.
  STEP    what gave the value: descriptor, base node, difference (of a node from its base node), connection,
          propagated (from the source of a sink's connection), option, settings, push (from the port that feeds it),
          override, disabled port, mode defaults (of all sensor modes), sensor mode
  EFFECT  wins, overwritten by a later step, or refused: what was there before stays. A node is made
  WHERE   "-" for what stands in no file

Examples:
  nuxo explain descriptor.xml settings.xml --key 10001 video_sink:width
  nuxo explain descriptor.xml settings.xml --key 10001 video_pg:main_out --format json
  nuxo explain descriptor.xml settings.xml --key 10001 . | grep 'disabled port'
)help";

const char* const kDiffFooter =
    R"help(Compares by meaning: the order of nodes, attributes and settings does not matter. Exit code 0 when both are the
same, 1 when they differ, 3 when they cannot be compared: a file is malformed, a key is missing, a graph cannot be built.
  A B                            two descriptors or two settings files
  FILE --key N --key M           two settings of a file
  A B --key N [--key M]          a setting of A and one of B
  --built DESCRIPTOR SETTINGS --key N --key M
  --built DESCRIPTOR SETTINGS DESCRIPTOR2 SETTINGS2 --key N [--key M]
                                 the graphs that are built of them

Examples:
  nuxo diff old_descriptor.xml new_descriptor.xml
  nuxo diff settings.xml --key 10001 --key 10002
  nuxo diff --built descriptor.xml settings.xml --key 10001 --key 10002 --format json
)help";

const char* const kFmtFooter =
    R"help(Writes the file in canonical form: names in lower case, attributes in a fixed order, four blanks for each level,
long tags broken. Comments stay, and so does what the file means. Formatting twice changes nothing more.
Files are UTF-8. With --in-place a file is replaced whole or not at all, and stays compressed if it was.

Examples:
  nuxo fmt settings.xml > formatted.xml
  nuxo fmt --in-place descriptor.xml settings.xml
  nuxo fmt --check descriptor.xml settings.xml
)help";

const char* const kSchemaFooter =
    R"help(Writes an XML schema (XSD 1.0) for editors, with a text on every element and attribute. A schema for settings
knows the names of nodes and their parts when it is given the descriptor.

Examples:
  nuxo schema descriptor > graph_descriptor.xsd
  nuxo schema settings descriptor.xml > graph_settings.xsd
)help";

} // namespace NuxoTool
