#!/usr/bin/env Rscript
# SPDX-License-Identifier: GPL-3.0-or-later
# Accuracy, reaction times and d-prime of one session, from its result files. Needs no packages.
#
#     Rscript read_session.R CHD001_experiment001.txt

record_columns <- c(filename = "character", nMother = "integer", nStranger = "integer",
                    rt = "numeric", rt_correct = "numeric", rt_incorrect = "numeric")
entry_columns <- c(filename = "character", stim = "character", resp = "character",
                   correctness = "integer", rt = "numeric")

# The path of the entries or parameters file that belongs to a records file.
companion <- function(records_path, topic) {
  name <- basename(records_path)
  suffix <- if (grepl(".", name, fixed = TRUE)) sub(".*[.]", "", name) else ""
  file.path(dirname(records_path), paste0(sub("[.][^.]*$", "", name), "_", topic, ".", suffix))
}

# The last line may have no line break, of which readLines() would warn.
lines_of <- function(path) readLines(path, warn = FALSE, encoding = "UTF-8")

# The records or the entries; without any the file is empty and has no header.
read_table <- function(path, columns) {
  lines <- lines_of(path)
  if (length(lines) == 0) lines <- paste(names(columns), collapse = "\t")
  read.delim(text = lines, quote = "", comment.char = "", na.strings = character(),
             colClasses = columns, encoding = "UTF-8")
}

# The parameters as texts, by name.
read_parameters <- function(path) {
  lines <- lines_of(path)
  setNames(sub("^[^:]*: ", "", lines), sub(":.*", "", lines))
}

# Number of answers, proportion correct and median reaction times in ms, by category of the token.
by_category <- function(entries) {
  do.call(rbind, lapply(c("mother", "stranger"), function(category) {
    own <- entries[entries$stim == category, ]
    data.frame(category = category, answers = nrow(own), accuracy = mean(own$correctness),
               median_rt = median(own$rt), median_rt_correct = median(own$rt[own$correctness == 1]))
  }))
}

# Sensitivity with the log-linear correction: (hits + 0.5) / (mother's tokens + 1), false alarms likewise.
d_prime <- function(entries) {
  z_of_mother_answers <- function(category) {
    responses <- entries$resp[entries$stim == category]
    if (length(responses) == 0) return(NaN)
    qnorm((sum(responses == "mother") + 0.5) / (length(responses) + 1))
  }
  z_of_mother_answers("mother") - z_of_mother_answers("stranger")
}

main <- function(records_path) {
  records <- read_table(records_path, record_columns)
  entries <- read_table(companion(records_path, "entries"), entry_columns)
  parameters <- read_parameters(companion(records_path, "parameters"))
  cat("subject\t", parameters["subCode"], "\nsession\t", parameters["sesNum"], "\ntokens\t", nrow(records), "\n\n",
      sep = "")
  write.table(by_category(entries), sep = "\t", quote = FALSE, row.names = FALSE)
  cat(sprintf("\nd-prime\t%.6f\n", d_prime(entries)))
}

# Not when the file is sourced for its functions.
if (sys.nframe() == 0) main(commandArgs(trailingOnly = TRUE)[1])
