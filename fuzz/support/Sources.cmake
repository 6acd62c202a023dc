# SPDX-License-Identifier: Apache-2.0
# What the fuzz targets share, and what one of them needs besides its own source; also for the replay.
set(nuxo_fuzz_support_sources
    CameraRules.cpp
    ContextRules.cpp
    FormatRules.cpp
    FrameRules.cpp
    Fuzzing.cpp
    MemberRules.cpp
    NumberRules.cpp
    PortFacts.cpp
    PortRules.cpp
    SilentLog.cpp
    SimulationRules.cpp
    SubgraphRules.cpp
    TreeChecks.cpp)
list(TRANSFORM nuxo_fuzz_support_sources PREPEND "${CMAKE_CURRENT_LIST_DIR}/")

set(nuxo_fuzz_sources_graph
    "${CMAKE_CURRENT_LIST_DIR}/../GraphBuilder.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../GraphMemory.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../GraphQuestions.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/EditRules.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/GraphRules.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/TreeCopy.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../../tests/support/AllocationFailures.cpp")

# What the tests compare the library with serves here, too.
set(nuxo_fuzz_sources_formats
    "${CMAKE_CURRENT_LIST_DIR}/../../tests/formats/LibraryComparison.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../../tests/formats/SecondComputation.cpp")

set(nuxo_fuzz_sources_kernels
    "${CMAKE_CURRENT_LIST_DIR}/../GraphBuilder.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../KernelGraphBuilder.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../KernelQuestions.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/KernelRules.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/../../tests/support/AllocationFailures.cpp")

# Without what stands in for the system logger.
set(nuxo_fuzz_sources_tool
    "${CMAKE_CURRENT_LIST_DIR}/../ToolRun.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/Fuzzing.cpp")
