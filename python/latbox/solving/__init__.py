"""From a model to an answer: rewriting, the two engines side by side, and the check of every point."""
